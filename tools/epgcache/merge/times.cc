#include "tools/epgcache/merge/times.h"

#include <unicode/timezone.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <limits>

#include "platform/services.h"
#include "tools/epgcache/text.h"

namespace epgcache {

namespace {

constexpr std::int64_t kSecondsTo1970 = std::int64_t{134'774} * 86'400;
constexpr double kMillisecondsPerSecond = 1000;

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

int NumberOf(std::string_view digits) {
  int number = 0;
  for (const char digit : digits) number = number * 10 + (digit - '0');
  return number;
}

struct NamedZone {
  std::string_view name;
  std::int32_t east;  // minutes
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
    if (EqualIgnoringCase(zone.name, name)) return zone.east;
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

// A moment of a clock.
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
  return time / platform::kTicksPerSecond + second + (end_of_day ? 86'400 : 0);
}

// Null for an unknown name.
std::shared_ptr<const icu::BasicTimeZone> RulesOf(std::string_view name) {
  std::unique_ptr<icu::TimeZone> zone(
      name == "local" ? icu::TimeZone::detectHostTimeZone()
                      : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(icu::StringPiece(
                            name.data(), static_cast<std::int32_t>(name.size())))));
  const bool has_rules = dynamic_cast<const icu::BasicTimeZone*>(zone.get()) != nullptr;
  if (!has_rules || *zone == icu::TimeZone::getUnknown()) return nullptr;
  return std::shared_ptr<const icu::BasicTimeZone>(
      static_cast<const icu::BasicTimeZone*>(zone.release()));
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

// In whole minutes, which have 32 bits.
std::optional<std::int32_t> Minutes(std::int64_t seconds) {
  if (seconds < 0 || seconds / 60 > std::numeric_limits<std::int32_t>::max()) return std::nullopt;
  return static_cast<std::int32_t>(seconds / 60);
}

std::int64_t NowUtc() { return platform::GetSystemTimeAsFileTime() / platform::kTicksPerSecond; }

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
  if (letters != text.size()) {
    const auto offset = EastOfOffset(text.substr(letters));
    if (!offset || east != 0) return std::nullopt;  // what would "CET+1" be?
    east = *offset;
  }
  if (text.empty()) return std::nullopt;
  Zone zone;
  zone.east_ = std::int64_t{east} * 60;
  return zone;
}

std::optional<Zone> Zone::Of(std::string_view text) {
  // Other short names mean one thing in listings and another to those who keep the rules.
  constexpr std::string_view kWithRules[] = {"CET", "EET", "MET", "WET"};
  const bool has_rules =
      std::find(std::begin(kWithRules), std::end(kWithRules), text) != std::end(kWithRules);
  if (auto fixed = Fixed(text); fixed && !has_rules) return fixed;
  Zone zone;
  zone.rules_ = RulesOf(text);
  if (zone.rules_ == nullptr) return std::nullopt;
  return zone;
}

std::int64_t Zone::ToUtc(std::int64_t clock) const {
  if (rules_ == nullptr) return clock - east_;
  std::int32_t raw = 0;
  std::int32_t saving = 0;
  UErrorCode error = U_ZERO_ERROR;
  rules_->getOffsetFromLocal(static_cast<double>(clock - kSecondsTo1970) * kMillisecondsPerSecond,
                             UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_FORMER, raw, saving, error);
  return clock - (raw + saving) / 1000;
}

std::int64_t Zone::ToClock(std::int64_t time) const {
  if (rules_ == nullptr) return time + east_;
  std::int32_t raw = 0;
  std::int32_t saving = 0;
  UErrorCode error = U_ZERO_ERROR;
  rules_->getOffset(static_cast<double>(time - kSecondsTo1970) * kMillisecondsPerSecond, 0, raw,
                    saving, error);
  return time + (raw + saving) / 1000;
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
  if (!own && !suffix.empty() && std::isalpha(static_cast<unsigned char>(suffix.front())) == 0)
    return std::nullopt;
  const std::int64_t seconds = own ? own->ToUtc(*clock) : zone.ToUtc(*clock);
  if (!Minutes(seconds)) return std::nullopt;
  return XmltvTime{seconds, own              ? OwnZone::kGiven
                            : suffix.empty() ? OwnZone::kMissing
                                             : OwnZone::kUnknown};
}

std::optional<std::int32_t> ParseTimeOfOption(std::string_view text, const Zone& zone) {
  if (text == "now") return Minutes(NowUtc());
  if (text == "today") {
    const std::int64_t clock = zone.ToClock(NowUtc());
    return Minutes(zone.ToUtc(clock - clock % 86'400));
  }
  // Not a year and a zone.
  if (text.size() == 7 && text[4] == '-') return std::nullopt;
  const auto time = ParseXmltvTime(text, zone);
  if (!time || time->zone == OwnZone::kUnknown) return std::nullopt;
  return Minutes(time->seconds);
}

std::string TextOfTime(std::int32_t minutes, const Zone& zone) {
  const std::int64_t clock = zone.ToClock(std::int64_t{minutes} * 60);
  platform::SystemTime time = {};
  if (!platform::FileTimeToSystemTime(clock * platform::kTicksPerSecond, time)) return "?";
  char text[32] = "";
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", time.year, time.month, time.day,
                time.hour, time.minute);
  return text;
}

}  // namespace epgcache
