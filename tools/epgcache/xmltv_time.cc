#include "tools/epgcache/xmltv_time.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "platform/services.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::int64_t kMinutesTo1970 = std::int64_t{134'774} * 1440;

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

int NumberOf(std::string_view digits) {
  int number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

struct NamedZone {
  std::string_view name;
  std::int32_t east;
};

// The names that are written in listings. One that means several zones has its most common one.
constexpr NamedZone kNamedZones[] = {
    {"Z", 0},       {"UTC", 0},     {"GMT", 0},    {"UT", 0},     {"WET", 0},    {"WEST", 60},
    {"BST", 60},    {"CET", 60},    {"MET", 60},   {"MEZ", 60},   {"CEST", 120}, {"MEST", 120},
    {"MESZ", 120},  {"EET", 120},   {"SAST", 120}, {"EEST", 180}, {"MSK", 180},  {"MSD", 240},
    {"HKT", 480},   {"SGT", 480},   {"AWST", 480}, {"JST", 540},  {"KST", 540},  {"ACST", 570},
    {"ACDT", 630},  {"AEST", 600},  {"AEDT", 660}, {"NZST", 720}, {"NZDT", 780}, {"NDT", -150},
    {"NST", -210},  {"BRT", -180},  {"ADT", -180}, {"AST", -240}, {"EDT", -240}, {"EST", -300},
    {"CDT", -300},  {"CST", -360},  {"MDT", -360}, {"MST", -420}, {"PDT", -420}, {"PST", -480},
    {"AKDT", -480}, {"AKST", -540}, {"HST", -600},
};

std::optional<std::int32_t> EastOfName(std::string_view name) {
  for (const NamedZone& zone : kNamedZones) {
    if (std::equal(zone.name.begin(), zone.name.end(), name.begin(), name.end(),
                   [](char a, char b) { return a == std::toupper(static_cast<unsigned char>(b)); }))
      return zone.east;
  }
  return std::nullopt;
}

// "+hmm" in any of its forms: one or two digits of hours, two of minutes, a colon between.
std::optional<std::int32_t> EastOfOffset(std::string_view text) {
  const bool west = text.front() == '-';
  text.remove_prefix(1);
  std::string digits;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsDigit(text[i])) {
      digits += text[i];
    } else if (text[i] != ':' || i + 3 != text.size() || i == 0) {
      return std::nullopt;
    }
  }
  if (digits.empty() || digits.size() > 4) return std::nullopt;
  const std::size_t hour_digits = digits.size() < 3 ? digits.size() : digits.size() - 2;
  const int hours = NumberOf(std::string_view(digits).substr(0, hour_digits));
  const int minutes = NumberOf(std::string_view(digits).substr(hour_digits));
  if (hours > 15 || minutes > 59) return std::nullopt;
  const std::int32_t east = hours * 60 + minutes;
  return west ? -east : east;
}

// A moment of a clock, in minutes since 1601 as that clock has them.
std::optional<std::int64_t> ReadClock(std::string_view digits) {
  int fields[] = {0, 1, 1, 0, 0, 0};
  fields[0] = NumberOf(digits.substr(0, 4));
  for (std::size_t field = 1, at = 4; field < std::size(fields) && at + 2 <= digits.size();
       ++field, at += 2)
    fields[field] = NumberOf(digits.substr(at, 2));
  const auto [year, month, day, hour, minute, second] = std::to_array(fields);
  // The last moment of a day may be called its 24th hour; and some minutes have a second more.
  const bool end_of_day = hour == 24 && minute == 0 && second == 0;
  if (second > 60) return std::nullopt;
  platform::FileTime time = 0;
  if (!platform::SystemTimeToFileTime({year, month, 0, day, end_of_day ? 0 : hour, minute, 0, 0},
                                      time))
    return std::nullopt;
  return time / platform::kTicksPerMinute + (end_of_day ? 1440 : 0);
}

// The offset that the process's zone has at a time.
std::int64_t EastByRules(std::int64_t utc_minutes) {
  const std::time_t time = (utc_minutes - kMinutesTo1970) * 60;
  std::tm clock = {};
  if (localtime_r(&time, &clock) == nullptr) return 0;
  return clock.tm_gmtoff / 60;
}

bool HasRules(std::string_view name) {
  const bool is_name = std::all_of(name.begin(), name.end(), [](unsigned char byte) {
    return std::isalnum(byte) != 0 || byte == '/' || byte == '_' || byte == '-' || byte == '+';
  });
  if (!is_name || name.empty() || std::isalpha(static_cast<unsigned char>(name.front())) == 0)
    return false;
  const char* const folder = std::getenv("TZDIR");
  std::ifstream rules(std::filesystem::path(folder != nullptr ? folder : "/usr/share/zoneinfo") /
                      name);
  char mark[4] = "";
  return rules.read(mark, sizeof mark) && std::string_view(mark, sizeof mark) == "TZif";
}

// Takes the separators of ISO 8601 out of "2026-11-23T20:15:00.0Z" and "20261123T2015".
std::string WithoutSeparators(std::string_view text) {
  std::string plain(text);
  const auto has = [&plain](std::size_t at, std::string_view marks) {
    return at + 1 < plain.size() && marks.find(plain[at]) != std::string_view::npos &&
           IsDigit(plain[at + 1]);
  };
  if (has(4, "-") && has(7, "-")) plain.erase(7, 1).erase(4, 1);
  const bool has_clock = has(8, "T") || (has(8, " ") && plain.find(':') == 11);
  if (!has_clock) return plain;
  plain.erase(8, 1);
  for (const std::size_t at : {10U, 12U}) {
    if (has(at, ":")) plain.erase(at, 1);
  }
  if (has(14, ".,"))
    plain.erase(14, std::min(plain.find_first_not_of("0123456789", 15), plain.size()) - 14);
  return plain;
}

std::optional<std::int32_t> Fitting(std::int64_t minutes) {
  if (minutes < 0 || minutes > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(minutes);
}

std::int64_t NowUtc() { return platform::GetSystemTimeAsFileTime() / platform::kTicksPerMinute; }

}  // namespace

std::optional<Zone> Zone::Fixed(std::string_view text) {
  text = Trimmed(text);
  const std::size_t letters = static_cast<std::size_t>(
      std::find_if(text.begin(), text.end(), [](char byte) { return byte == '+' || byte == '-'; }) -
      text.begin());
  std::int32_t east = 0;
  if (letters != 0) {
    const auto named = EastOfName(text.substr(0, letters));
    if (!named) return std::nullopt;
    east = *named;
  }
  if (letters == text.size()) {
    if (letters == 0) return std::nullopt;
    return Zone(east);
  }
  if (east != 0) return std::nullopt;  // what would "CET+1" be?
  const auto offset = EastOfOffset(text.substr(letters));
  if (!offset) return std::nullopt;
  return Zone(*offset);
}

std::optional<Zone> Zone::Of(std::string_view text) {
  if (text == "UTC") return Zone();
  if (text != "local") {
    if (!HasRules(text)) return Fixed(text);
    setenv("TZ", std::string(text).c_str(), 1);
  } else if (std::getenv("TZ") == nullptr) {
    // Otherwise the library checks for a changed file at every call.
    setenv("TZ", ":/etc/localtime", 1);
  }
  tzset();
  Zone zone;
  zone.has_rules_ = true;
  return zone;
}

std::int64_t Zone::ToUtc(std::int64_t minutes) const {
  if (!has_rules_) return minutes - east_;
  const std::int64_t number = minutes / 1440;
  if (day_.number != number)
    day_ = {number, EastByRules((number - 1) * 1440), EastByRules((number + 2) * 1440)};
  const std::int64_t first = minutes - day_.east_before;
  const std::int64_t second = minutes - day_.east_after;
  if (first == second || EastByRules(first) == day_.east_before) return first;
  return EastByRules(second) == day_.east_after ? second : first;
}

std::int64_t Zone::ToClock(std::int64_t minutes) const {
  return minutes + (has_rules_ ? EastByRules(minutes) : east_);
}

std::optional<XmltvTime> ParseXmltvTime(std::string_view text, const Zone& zone) {
  const std::string plain = WithoutSeparators(Trimmed(text));
  const std::size_t count = std::min(plain.find_first_not_of("0123456789"), plain.size());
  if (count < 4 || count > 14) return std::nullopt;
  const auto clock = ReadClock(std::string_view(plain).substr(0, count));
  if (!clock) return std::nullopt;
  const std::string_view suffix = Trimmed(std::string_view(plain).substr(count));
  const auto own = Zone::Fixed(suffix);
  // An unknown zone at least consists of letters.
  const bool is_unknown = !own && !suffix.empty();
  if (is_unknown && std::isalpha(static_cast<unsigned char>(suffix.front())) == 0)
    return std::nullopt;
  const auto minutes = Fitting(own ? own->ToUtc(*clock) : zone.ToUtc(*clock));
  if (!minutes) return std::nullopt;
  return XmltvTime{*minutes, is_unknown};
}

std::optional<std::int32_t> ParseTimeOfOption(std::string_view text, const Zone& zone) {
  if (text == "now") return Fitting(NowUtc());
  if (text == "today") {
    const std::int64_t clock = zone.ToClock(NowUtc());
    return Fitting(zone.ToUtc(clock - clock % 1440));
  }
  // Not a year and a zone.
  if (text.size() == 7 && text[4] == '-') return std::nullopt;
  const auto time = ParseXmltvTime(text, zone);
  if (!time || time->zone_unknown) return std::nullopt;
  return time->minutes;
}

}  // namespace epgcache
