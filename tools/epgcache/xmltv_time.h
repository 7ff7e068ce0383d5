// Times as XMLTV files write them.
//
// Units: a time is whole minutes since 1601-01-01 00:00 UTC, an offset is minutes east of UTC.
// Threads: any; zones with rules read the C library's TZ.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace epgcache {

class Zone {
 public:
  // "+0100", "+01:00", "+01", "Z", a name that listings use ("CEST"), or both ("UTC+1").
  static std::optional<Zone> Fixed(std::string_view text);

  // A zone with rules ("Europe/Rome", "CET", or "local"), else one of those. A zone with rules
  // becomes the process's own, so that there is one at a time.
  static std::optional<Zone> Of(std::string_view text);

  // UTC.
  Zone() = default;

  // The time that its clocks show as `minutes` of a UTC clock. Of a time that they show twice, the
  // first; one that they pass over is read by the offset before that.
  std::int64_t ToUtc(std::int64_t minutes) const;
  // What its clocks show at a time.
  std::int64_t ToClock(std::int64_t minutes) const;

 private:
  explicit Zone(std::int32_t east) : east_(east) {}

  // The offsets a day before and after a day, which mostly are the same.
  struct Day {
    std::int64_t number = -1;
    std::int64_t east_before = 0;
    std::int64_t east_after = 0;
  };

  std::int32_t east_ = 0;
  bool has_rules_ = false;
  mutable Day day_;  // that was asked for last
};

struct XmltvTime {
  std::int32_t minutes;
  bool zone_unknown;  // the text names a zone that nobody knows, and `zone` has been taken
};

// Reads 4 to 14 digits, year first, and a zone behind them; `zone` is that of texts without one. A
// month or day that is missing is 1, an hour or minute 0. The separators of ISO 8601 may stand
// between them. Nothing for another text, a time that is not on the calendar, or one before 1601.
std::optional<XmltvTime> ParseXmltvTime(std::string_view text, const Zone& zone);

// The same for people: "today" and "now", too.
std::optional<std::int32_t> ParseTimeOfOption(std::string_view text, const Zone& zone);

}  // namespace epgcache
