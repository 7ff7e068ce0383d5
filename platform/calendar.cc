#include "platform/calendar.h"

namespace platform {

namespace {

constexpr int kFirstYear = 1601;  // the first of a cycle of 400 years
constexpr int kLastYear = 30827;
constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

bool IsLeap(int year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

// Days of a year before the first of `month` (1 to 13).
int DaysBefore(int year, int month) {
  return kDaysBefore[month - 1] + (month > 2 && IsLeap(year) ? 1 : 0);
}

// Days from 1601-01-01 to the first of January of `year`.
std::int64_t DaysToYear(int year) {
  const std::int64_t years = year - kFirstYear;
  return years * 365 + years / 4 - years / 100 + years / 400;
}

bool Within(int value, int low, int high) { return low <= value && value <= high; }

}  // namespace

bool ToFileTime(const SystemTime& t, FileTime& time) {
  if (!Within(t.year, kFirstYear, kLastYear) || !Within(t.month, 1, 12) ||
      !Within(t.day, 1, DaysBefore(t.year, t.month + 1) - DaysBefore(t.year, t.month)) ||
      !Within(t.hour, 0, 23) || !Within(t.minute, 0, 59) || !Within(t.second, 0, 59) ||
      !Within(t.milliseconds, 0, 999)) {
    return false;
  }
  const std::int64_t days = DaysToYear(t.year) + DaysBefore(t.year, t.month) + t.day - 1;
  const std::int64_t seconds = (t.hour * 60 + t.minute) * 60 + t.second;
  time = days * kTicksPerDay + seconds * 10'000'000 + t.milliseconds * std::int64_t{10'000};
  return true;
}

SystemTime FromFileTime(FileTime time) {
  const std::int64_t days = time / kTicksPerDay;
  const std::int64_t ticks = time % kTicksPerDay;
  // The estimate is never too late, and a year too early at most.
  int year = kFirstYear + static_cast<int>(days * 400 / 146097);
  if (DaysToYear(year + 1) <= days) ++year;
  const int day_of_year = static_cast<int>(days - DaysToYear(year));
  int month = 12;
  while (DaysBefore(year, month) > day_of_year) --month;

  SystemTime t = {};
  t.year = year;
  t.month = month;
  t.day_of_week = static_cast<int>((days + 1) % 7);  // 1601-01-01 was a Monday
  t.day = day_of_year - DaysBefore(year, month) + 1;
  const int milliseconds = static_cast<int>(ticks / 10'000);
  t.hour = milliseconds / 3'600'000;
  t.minute = milliseconds / 60'000 % 60;
  t.second = milliseconds / 1'000 % 60;
  t.milliseconds = milliseconds % 1'000;
  return t;
}

}  // namespace platform
