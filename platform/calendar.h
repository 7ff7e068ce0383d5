// The conversions of file times, for systems that do not have them.
//
// What fails, fails for an invalid parameter.
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

// True, and `broken_down` set, when the time is not negative.
[[nodiscard]] bool FromFileTime(FileTime time, SystemTime& broken_down);

}  // namespace platform
