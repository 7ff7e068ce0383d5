// The Gregorian calendar, for systems that lack the file-time conversions.
#pragma once

#include <chrono>

#include "platform/services.h"

namespace platform {

// The day from which file times count.
inline constexpr std::chrono::sys_days kFirstDay =
    std::chrono::year(1601) / std::chrono::January / 1;
inline constexpr FileTime kUnixEpoch = -kFirstDay.time_since_epoch().count() * kTicksPerDay;

// True, and `time` set, when date and time exist and the year lies in 1601 to 30827.
[[nodiscard]] bool ToFileTime(const SystemTime& broken_down, FileTime& time);

// REQUIRES: `time` is not negative.
SystemTime FromFileTime(FileTime time);

}  // namespace platform
