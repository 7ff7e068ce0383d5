// Time values, their parsing and their texts.
//
// A time value is a count of whole minutes since 1601-01-01 00:00 UTC, as a signed 32-bit integer;
// -1 marks a time never set.
//
// Threads: any, at the same time.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

inline constexpr std::int32_t kTimeNeverSet = -1;
inline constexpr std::int32_t kMinutesPerDay = 1440;

// How a listings format writes a date and time.
enum class TimeLayout : std::int32_t {
  kYearFirst = 1,  // 2007-02-05T14:30, in UTC
  kDayFirst = 2,   // 05/02/2007 14:30, in UTC
  kDigits = 3,     // 20070205143000, UTC unless a zone such as " +0100" follows
};

// The current time, brought down to a multiple of `granularity`; 0 counts as 1.
std::int32_t GetNowTime(std::int32_t granularity);

// The text of a time in local time, by the offset that is in force now.
//
//   0  Mon, Feb 05, 14:30 (2007)     3  Today, Monday, Yesterday, Last Monday or Feb-05
//   1  14:30                         4  02:30 pm
//   2  Mon:Feb-05:2007               5  02:30pm Monday 5-Feb-2007
//
// Any other format gives an empty text; a time before 1601 "Error: " and the system's code.
std::string ConvertLocalTime2String(std::int32_t time, std::int32_t format);

// Reads a date and time. A `time_text` holds the time of day for the first two layouts, when it is
// not in the text itself (from its 12th character). A date that does not exist, or whose time does
// not fit into 32 bits, gives -1; another layout 0.
//
// Digits are not checked to be digits. A text of kDigits that makes no date that way (it is cut
// short, or a zone stands early) is read by the digits at its start.
//
// REQUIRES: a NUL follows either text.
std::int32_t ParseTime(TimeLayout layout, std::string_view text,
                       std::optional<std::string_view> time_text = std::nullopt);
