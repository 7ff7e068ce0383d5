// Times as XMLTV files write them.
//
// Units: a time is whole seconds since 1601-01-01 00:00 UTC, or minutes where that is said; a clock
// is what a zone's clocks show, counted alike.
// Threads: any.
#pragma once

#include <unicode/basictz.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace epgcache {

class Zone {
 public:
  // "+0100", "+01:00", "+01", "Z", a name that listings use ("CEST"), or both ("UTC+1").
  static std::optional<Zone> Fixed(std::string_view text);

  // A zone with rules ("Europe/Rome", "CET", or "local"), else one of those.
  static std::optional<Zone> Of(std::string_view text);

  // UTC.
  Zone() = default;

  // The time that its clocks show as that. Of a time that they show twice, the first; one that they
  // pass over is read by the offset before that.
  std::int64_t ToUtc(std::int64_t clock) const;
  // What its clocks show at a time.
  std::int64_t ToClock(std::int64_t time) const;

 private:
  std::int64_t east_ = 0;                            // seconds east of UTC
  std::shared_ptr<const icu::BasicTimeZone> rules_;  // null: that offset all the time
};

enum class OwnZone { kGiven, kMissing, kUnknown };

struct XmltvTime {
  std::int64_t seconds;
  OwnZone zone;  // when it is not given, the reader's has been taken
};

// Reads 4 to 14 digits, year first, and a zone after them; `zone` is that of texts without one. A
// month or day that is missing is 1, an hour, minute or second 0. The separators of ISO 8601 may
// stand between them. Nothing for another text, a time that is not on the calendar, or one before
// 1601 or beyond what 32 bits of minutes hold.
std::optional<XmltvTime> ParseXmltvTime(std::string_view text, const Zone& zone);

// The same for people, in minutes: "today" and "now", too.
std::optional<std::int32_t> ParseTimeOfOption(std::string_view text, const Zone& zone);

// "2026-11-23 20:15" on the zone's clocks.
std::string TextOfTime(std::int32_t minutes, const Zone& zone);

}  // namespace epgcache
