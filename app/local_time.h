// Dates and times of day as people write and read them.
//
// Units: a local time counts whole minutes since 1601-01-01 00:00 local time; what the plug-in
// calls a time counts them in UTC.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace shell {

inline constexpr std::int64_t kMinutesOfDay = 1440;

// Reads the plug-in's text of a time, such as "Mon, Feb 05, 14:30 (2007)", as a local time.
std::optional<std::int64_t> ReadPluginTime(std::string_view text);

// What a person asks for.
struct Moment {
  std::optional<std::int64_t> day;     // its first minute, local time
  std::optional<std::int32_t> minute;  // of the day
};

// Reads a day, a time of day, or both, in this order: "20:15", "8pm", "tomorrow 20:15",
// "2026-11-23", "2026-11-23T20:15", "23.11.2026 20:15", "23/11/2026", "23 Nov 2026", "Nov 23",
// "Monday", "now". A date without a year is the next one. Nothing when it is none of these.
std::optional<Moment> ReadMoment(std::string_view text, std::int64_t local_now);

std::string HourText(std::int64_t local);      // 20:15
std::string DayText(std::int64_t local);       // Mon 23 Nov
std::string LongDayText(std::int64_t local);   // Mon 23 Nov 2026
std::string DateTimeText(std::int64_t local);  // Mon 23 Nov 2026 20:15
// 2026-11-23T20:15:00+01:00; `offset` is local time less UTC, in minutes.
std::string IsoText(std::int64_t local, std::int64_t offset);

}  // namespace shell
