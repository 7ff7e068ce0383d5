#include "tools/epgcache/xmltv_time.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <string>

#include "platform/services.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::int64_t kMinutesTo1970 = std::int64_t{134'774} * 1440;

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

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
  if (east != 0) return std::nullopt;  // "CET+1"
  const auto offset = EastOfOffset(text.substr(letters));
  if (!offset) return std::nullopt;
  return Zone(*offset);
}

std::optional<Zone> Zone::Of(std::string_view text) {
  if (auto fixed = Fixed(text)) return fixed;
  if (text != "local") {
    const bool plain = std::all_of(text.begin(), text.end(), [](unsigned char byte) {
      return std::isalnum(byte) != 0 || byte == '/' || byte == '_' || byte == '-' || byte == '+';
    });
    if (!plain || text.empty() || text.front() == '/') return std::nullopt;
    const char* const folder = std::getenv("TZDIR");
    const std::filesystem::path rules =
        std::filesystem::path(folder != nullptr ? folder : "/usr/share/zoneinfo") / text;
    std::error_code error;
    if (!std::filesystem::is_regular_file(rules, error)) return std::nullopt;
    setenv("TZ", std::string(text).c_str(), 1);
  }
  tzset();
  Zone zone;
  zone.has_rules_ = true;
  return zone;
}

std::int64_t Zone::ToUtc(std::int64_t minutes) const {
  if (!has_rules_) return minutes - east_;
  const std::time_t as_utc = (minutes - kMinutesTo1970) * 60;
  std::tm clock = {};
  if (gmtime_r(&as_utc, &clock) == nullptr) return minutes;
  clock.tm_isdst = -1;  // the rules say
  return std::mktime(&clock) / 60 + kMinutesTo1970;
}

std::optional<XmltvTime> ParseXmltvTime(std::string_view text, const Zone& zone) {
  text = Trimmed(text);
  const auto count =
      static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
  if (count < 4 || count > 14) return std::nullopt;
  const auto clock = ReadClock(text.substr(0, count));
  if (!clock) return std::nullopt;
  const std::string_view suffix = Trimmed(text.substr(count));
  const auto own = Zone::Fixed(suffix);
  const auto minutes = Fitting((own ? *own : zone).ToUtc(*clock));
  if (!minutes) return std::nullopt;
  return XmltvTime{*minutes, !own && !suffix.empty()};
}

std::optional<std::int32_t> ParseTimeOfOption(std::string_view text, const Zone& zone) {
  if (text == "now") return Fitting(NowUtc());
  std::string plain(text);
  if (text == "today") {
    // Where the zone's clocks are now: an hour's error at most on the day that they are changed.
    const std::int64_t now = NowUtc();
    const std::int64_t shown = now + (now - zone.ToUtc(now));
    return Fitting(zone.ToUtc(shown - shown % 1440));
  }
  if (text.size() >= 10 && text[4] == '-' && text[7] == '-') {
    plain = std::string(text.substr(0, 4)) + std::string(text.substr(5, 2)) +
            std::string(text.substr(8, 2));
    std::string_view rest = text.substr(10);
    if (!rest.empty()) {
      if (rest.size() < 6 || (rest[0] != ' ' && rest[0] != 'T') || rest[3] != ':')
        return std::nullopt;
      plain += std::string(rest.substr(1, 2)) + std::string(rest.substr(4));
    }
  }
  const auto time = ParseXmltvTime(plain, zone);
  if (!time || time->zone_unknown) return std::nullopt;
  return time->minutes;
}

}  // namespace epgcache
