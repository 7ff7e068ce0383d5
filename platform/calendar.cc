#include "platform/calendar.h"

#include <chrono>

namespace platform {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

bool Within(int value, int low, int high) { return low <= value && value <= high; }

}  // namespace

bool ToFileTime(const SystemTime& t, FileTime& time) {
  if (!Within(t.year, kFirstYear, kLastYear) || !Within(t.month, 1, 12) || !Within(t.day, 1, 31) ||
      !Within(t.hour, 0, 23) || !Within(t.minute, 0, 59) || !Within(t.second, 0, 59) ||
      !Within(t.milliseconds, 0, 999)) {
    return false;
  }
  const year_month_day date(std::chrono::year(t.year),
                            std::chrono::month(static_cast<unsigned>(t.month)),
                            std::chrono::day(static_cast<unsigned>(t.day)));
  if (!date.ok()) return false;
  const std::int64_t seconds = (t.hour * 60 + t.minute) * 60 + t.second;
  time = (sys_days(date) - kFirstDay).count() * kTicksPerDay + seconds * kTicksPerSecond +
         t.milliseconds * std::int64_t{10'000};
  return true;
}

bool FromFileTime(FileTime time, SystemTime& t) {
  if (time < 0) return false;
  const sys_days day = kFirstDay + std::chrono::days(time / kTicksPerDay);
  const year_month_day date(day);
  const int milliseconds = static_cast<int>(time % kTicksPerDay / 10'000);
  t.year = static_cast<int>(date.year());
  t.month = static_cast<int>(static_cast<unsigned>(date.month()));
  t.day_of_week = static_cast<int>(std::chrono::weekday(day).c_encoding());
  t.day = static_cast<int>(static_cast<unsigned>(date.day()));
  t.hour = milliseconds / 3'600'000;
  t.minute = milliseconds / 60'000 % 60;
  t.second = milliseconds / 1'000 % 60;
  t.milliseconds = milliseconds % 1'000;
  return true;
}

}  // namespace platform
