#include "app/local_time.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "text/letters.h"

namespace shell {

namespace {

using std::chrono::sys_days;
using std::chrono::year_month_day;

// From which the system's time values count.
constexpr sys_days kFirstDay = std::chrono::year(1601) / std::chrono::January / 1;
constexpr std::string_view kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                        "jul", "aug", "sep", "oct", "nov", "dec"};
constexpr std::string_view kWeekdays[] = {"sunday",   "monday", "tuesday", "wednesday",
                                          "thursday", "friday", "saturday"};

std::optional<std::int64_t> DayOf(int year, int month, int day) {
  if (year < 1601 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) {
    return std::nullopt;
  }
  const year_month_day date(std::chrono::year(year),
                            std::chrono::month(static_cast<unsigned>(month)),
                            std::chrono::day(static_cast<unsigned>(day)));
  if (!date.ok()) return std::nullopt;
  return (sys_days(date) - kFirstDay).count() * kMinutesOfDay;
}

sys_days DateOf(std::int64_t local) {
  const std::int64_t days = local / kMinutesOfDay - (local % kMinutesOfDay < 0 ? 1 : 0);
  return kFirstDay + std::chrono::days(days);
}

std::optional<int> Number(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || text[0] == '-' || error != std::errc() || end != text.data() + text.size()) {
    return std::nullopt;
  }
  return value;
}

// The numbers that a separator splits the word into; empty if any part is not a number.
std::vector<int> Numbers(std::string_view word, char between) {
  std::vector<int> numbers;
  for (;;) {
    const std::size_t end = std::min(word.find(between), word.size());
    const auto number = Number(word.substr(0, end));
    if (!number) return {};
    numbers.push_back(*number);
    if (end == word.size()) return numbers;
    word.remove_prefix(end + 1);
    if (word.empty()) return numbers;  // as in "23.11."
  }
}

// From 1; 0 for what is not a month.
int MonthOf(std::string_view word) {
  if (word.size() < 3) return 0;
  const auto* const found = std::find(std::begin(kMonths), std::end(kMonths), word.substr(0, 3));
  return found != std::end(kMonths) ? static_cast<int>(found - std::begin(kMonths)) + 1 : 0;
}

class MomentReader {
 public:
  MomentReader(std::string_view text, std::int64_t local_now)
      : now_(local_now), today_(local_now - local_now % kMinutesOfDay) {
    std::string word;
    for (const char c : Lowered(text)) {
      const bool joins = c == 't' && !word.empty() && word.back() >= '0' && word.back() <= '9';
      if (c == ' ' || c == ',' || joins) {
        if (!word.empty()) words_.push_back(std::move(word));
        word.clear();
      } else {
        word += c;
      }
    }
    if (!word.empty()) words_.push_back(std::move(word));
  }

  std::optional<Moment> Read() {
    if (words_.empty()) return std::nullopt;
    while (at_ < words_.size()) {
      if (!moment_.minute && TakeTime()) continue;
      if (!moment_.day && TakeDay()) continue;
      return std::nullopt;
    }
    return moment_;
  }

 private:
  bool TakeTime() {
    std::string_view word = words_[at_];
    if (word == "now") {
      moment_.day = today_;
      return SetMinute(static_cast<int>(now_ - today_) / 60, static_cast<int>(now_ - today_) % 60);
    }
    if (word == "noon") return SetMinute(12, 0);
    if (word == "midnight") return SetMinute(0, 0);
    const auto is_half = [](std::string_view text) { return text == "am" || text == "pm"; };
    std::string_view half = word.size() > 2 ? word.substr(word.size() - 2) : "";
    const bool joined = is_half(half);
    if (!joined) half = at_ + 1 < words_.size() ? std::string_view(words_[at_ + 1]) : "";
    const bool halved = is_half(half);
    if (joined) word.remove_suffix(2);
    const std::vector<int> parts = Numbers(word, ':');
    if (parts.empty() || parts.size() > 3 || (parts.size() == 1 && !halved)) return false;
    int hour = parts[0];
    if (halved) {
      if (hour < 1 || hour > 12) return false;
      hour = hour % 12 + (half == "pm" ? 12 : 0);
      if (!joined) ++at_;
    }
    return SetMinute(hour, parts.size() > 1 ? parts[1] : 0);
  }

  bool SetMinute(int hour, int minute) {
    if (hour > 23 || minute > 59) return false;
    moment_.minute = hour * 60 + minute;
    ++at_;
    return true;
  }

  bool TakeDay() {
    const std::string& word = words_[at_];
    if (word == "today") return SetDay(today_);
    if (word == "tomorrow") return SetDay(today_ + kMinutesOfDay);
    if (word == "yesterday") return SetDay(today_ - kMinutesOfDay);
    for (std::size_t i = 0; i < std::size(kWeekdays) && word.size() >= 3; ++i) {
      if (kWeekdays[i].substr(0, word.size()) != word) continue;
      const std::size_t now = std::chrono::weekday(DateOf(now_)).c_encoding();
      return SetDay(today_ + static_cast<std::int64_t>((i + 7 - now) % 7) * kMinutesOfDay);
    }
    if (const auto p = Numbers(word, '-'); p.size() == 3) return SetDate(p[0], p[1], p[2]);
    for (const char between : {'.', '/'}) {
      const auto p = Numbers(word, between);
      if (p.size() == 3) return SetDate(p[2], p[1], p[0]);
      if (p.size() == 2) return SetNextDate(p[1], p[0]);
    }
    return TakeDayAndMonth();
  }

  // "23 nov" or "nov 23", with or without a year after it.
  bool TakeDayAndMonth() {
    if (at_ + 1 == words_.size()) return false;
    const bool day_first = Number(words_[at_]).has_value();
    const auto day = Number(words_[at_ + (day_first ? 0 : 1)]);
    const int month = MonthOf(words_[at_ + (day_first ? 1 : 0)]);
    if (!day || month == 0) return false;
    ++at_;
    const auto year = at_ + 1 < words_.size() ? Number(words_[at_ + 1]) : std::nullopt;
    if (!year || *year < 1000) return SetNextDate(month, *day);
    ++at_;
    return SetDate(*year, month, *day);
  }

  bool SetNextDate(int month, int day) {
    const int year = static_cast<int>(year_month_day(DateOf(now_)).year());
    for (int later = 0; later < 8; ++later) {  // as far as to the next 29th of February
      const auto found = DayOf(year + later, month, day);
      if (found && *found >= today_) return SetDay(*found);
    }
    return false;
  }

  bool SetDate(int year, int month, int day) {
    const auto found = DayOf(year, month, day);
    return found && SetDay(*found);
  }

  bool SetDay(std::int64_t day) {
    moment_.day = day;
    ++at_;
    return true;
  }

  const std::int64_t now_;
  const std::int64_t today_;
  std::vector<std::string> words_;
  std::size_t at_ = 0;
  Moment moment_;
};

}  // namespace

std::optional<std::int64_t> ReadPluginTime(std::string_view text) {
  char weekday[4] = {};
  char month[4] = {};
  int day = 0;
  int hour = 0;
  int minute = 0;
  int year = 0;
  const std::string copy(text);
  if (std::sscanf(copy.c_str(), "%3s, %3s %d, %d:%d (%d)", weekday, month, &day, &hour, &minute,
                  &year) != 6) {
    return std::nullopt;
  }
  const auto first = DayOf(year, MonthOf(Lowered(month)), day);
  if (!first) return std::nullopt;
  return *first + std::int64_t{hour} * 60 + minute;
}

std::optional<Moment> ReadMoment(std::string_view text, std::int64_t local_now) {
  return MomentReader(text, local_now).Read();
}

std::string HourText(std::int64_t local) {
  const std::int64_t minute = (local % kMinutesOfDay + kMinutesOfDay) % kMinutesOfDay;
  char text[8];
  std::snprintf(text, sizeof text, "%02d:%02d", static_cast<int>(minute / 60),
                static_cast<int>(minute % 60));
  return text;
}

std::string DayText(std::int64_t local) {
  const sys_days date = DateOf(local);
  const year_month_day parts(date);
  std::string weekday(kWeekdays[std::chrono::weekday(date).c_encoding()].substr(0, 3));
  std::string month(kMonths[static_cast<unsigned>(parts.month()) - 1]);
  weekday[0] = static_cast<char>(weekday[0] & ~0x20);
  month[0] = static_cast<char>(month[0] & ~0x20);
  return weekday + ' ' + std::to_string(static_cast<unsigned>(parts.day())) + ' ' + month;
}

std::string LongDayText(std::int64_t local) {
  return DayText(local) + ' ' +
         std::to_string(static_cast<int>(year_month_day(DateOf(local)).year()));
}

std::string DateTimeText(std::int64_t local) { return LongDayText(local) + ' ' + HourText(local); }

std::string IsoText(std::int64_t local, std::int64_t offset) {
  const year_month_day date(DateOf(local));
  const std::int64_t east = offset < 0 ? -offset : offset;
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02u-%02uT%s:00%c%02d:%02d", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                HourText(local).c_str(), offset < 0 ? '-' : '+', static_cast<int>(east / 60),
                static_cast<int>(east % 60));
  return text;
}

}  // namespace shell
