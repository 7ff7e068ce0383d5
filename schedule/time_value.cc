#include "schedule/time_value.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

#include "host/api.h"
#include "platform/services.h"
#include "schedule/text_number.h"

using platform::FileTime;
using platform::SystemTime;

namespace {

constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* kShortDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* kDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                 "Thursday", "Friday", "Saturday"};

const char* MonthOf(const SystemTime& t) { return kMonths[t.month - 1]; }
const char* HalfDayOf(const SystemTime& t) { return t.hour < 12 ? "am" : "pm"; }
int HourOfHalfDay(const SystemTime& t) { return t.hour % 12 == 0 ? 12 : t.hour % 12; }

// Printf's output; none of the texts here is longer than 63 bytes.
std::string Formatted(const char* format, ...) ORVANE_PRINTF(1, 2);
std::string Formatted(const char* format, ...) {
  char text[64];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string ErrorText() { return Formatted("Error: %i", platform::GetLastError()); }

std::string RelativeDay(FileTime local, const SystemTime& t) {
  const SystemTime now = platform::GetLocalTime();
  FileTime local_now = 0;
  if (!platform::SystemTimeToFileTime(now, local_now)) return ErrorText();
  const std::int64_t days = local / platform::kTicksPerDay - local_now / platform::kTicksPerDay;
  if (days == 0) return "Today";
  if (days == -1) return "Yesterday";
  if (days >= 1 && days <= 6) return kDays[t.day_of_week];
  if (days >= -7 && days <= -2) return Formatted("Last %s", kDays[t.day_of_week]);
  return Formatted("%s-%02i", MonthOf(t), t.day);
}

// The number at an offset of a text; 0 beyond its end.
std::int32_t NumberAt(std::string_view text, std::size_t offset) {
  return offset < text.size() ? ReadNumber(text.substr(offset)) : 0;
}

// Digits are taken as their codes' distance from that of '0', whatever they are.
int Digits(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (std::size_t i = 0; i < count; ++i) {
    number = number * 10 + (static_cast<unsigned char>(text[at + i]) - '0');
  }
  return number;
}

// Minutes of a date and time; nothing when the calendar does not know it.
std::optional<std::int64_t> ToMinutes(const SystemTime& broken_down) {
  FileTime time = 0;
  if (!platform::SystemTimeToFileTime(broken_down, time)) return std::nullopt;
  return time / platform::kTicksPerMinute;
}

// Reads as many of the fourteen digits as `given` says; fields that are not whole keep the
// beginning of their span.
std::optional<std::int64_t> DigitsToMinutes(std::string_view text, std::size_t given) {
  const auto field = [&](std::size_t at, int missing) {
    return at + 2 <= given ? Digits(text, at, 2) : missing;
  };
  SystemTime t = {};
  t.year = Digits(text, 0, 4);
  t.month = field(4, 1);
  t.day = field(6, 1);
  t.hour = field(8, 0);
  t.minute = field(10, 0);
  t.second = field(12, 0);
  return ToMinutes(t);
}

// What to add to a local time to make it UTC: " +hhmm" or " -hhmm" at the end of the text, the
// first blank being the one before the sign.
int ZoneCorrection(std::string_view text) {
  const std::size_t blank = text.find(' ');
  if (blank == std::string_view::npos || text.size() != blank + 6) return 0;
  const int minutes = Digits(text, blank + 2, 2) * 60 + Digits(text, blank + 4, 2);
  if (text[blank + 1] == '+') return -minutes;
  return text[blank + 1] == '-' ? minutes : 0;
}

std::optional<std::int64_t> ParseDigits(std::string_view text) {
  constexpr std::size_t kDigits = 14;
  std::optional<std::int64_t> minutes;
  if (text.size() >= kDigits) minutes = DigitsToMinutes(text, kDigits);
  if (!minutes) {
    std::size_t given = 0;
    while (given < text.size() && given < kDigits && text[given] >= '0' && text[given] <= '9') {
      ++given;
    }
    if (given < 4) return std::nullopt;
    minutes = DigitsToMinutes(text, given);
  }
  if (minutes) *minutes += ZoneCorrection(text);
  return minutes;
}

}  // namespace

std::int32_t GetNowTime(std::int32_t granularity) {
  const std::int64_t now = platform::GetSystemTimeAsFileTime() / platform::kTicksPerMinute;
  return static_cast<std::int32_t>(granularity == 0 ? now : now - now % granularity);
}

std::string ConvertLocalTime2String(std::int32_t time, std::int32_t format) {
  FileTime local = 0;
  SystemTime t = {};
  if (!platform::FileTimeToLocalFileTime(time * platform::kTicksPerMinute, local) ||
      !platform::FileTimeToSystemTime(local, t)) {
    return ErrorText();
  }
  switch (format) {
    case 0:
      return Formatted("%s, %s %02i, %02i:%02i (%i)", kShortDays[t.day_of_week], MonthOf(t), t.day,
                       t.hour, t.minute, t.year);
    case 1:
      return Formatted("%02i:%02i", t.hour, t.minute);
    case 2:
      return Formatted("%s:%s-%02i:%i", kShortDays[t.day_of_week], MonthOf(t), t.day, t.year);
    case 3:
      return RelativeDay(local, t);
    case 4:
      return Formatted("%02i:%02i %s", HourOfHalfDay(t), t.minute, HalfDayOf(t));
    case 5:
      return Formatted("%02i:%02i%s %s %d-%s-%d", HourOfHalfDay(t), t.minute, HalfDayOf(t),
                       kDays[t.day_of_week], t.day, MonthOf(t), t.year);
    default:
      return {};
  }
}

std::int32_t ParseTime(TimeLayout layout, std::string_view text,
                       std::optional<std::string_view> time_text) {
  std::optional<std::int64_t> minutes;
  switch (layout) {
    case TimeLayout::kYearFirst:
    case TimeLayout::kDayFirst: {
      const bool year_first = layout == TimeLayout::kYearFirst;
      const std::string_view time = time_text.value_or(text);
      const std::size_t at = time_text ? 0 : 11;
      SystemTime t = {};
      t.year = NumberAt(text, year_first ? 0 : 6);
      t.month = NumberAt(text, year_first ? 5 : 3);
      t.day = NumberAt(text, year_first ? 8 : 0);
      t.hour = NumberAt(time, at);
      t.minute = NumberAt(time, at + 3);
      minutes = ToMinutes(t);
      break;
    }
    case TimeLayout::kDigits:
      minutes = ParseDigits(text);
      break;
    default:
      return 0;
  }
  using Limits = std::numeric_limits<std::int32_t>;
  if (!minutes || *minutes < Limits::min() || *minutes > Limits::max()) return kTimeNeverSet;
  return static_cast<std::int32_t>(*minutes);
}
