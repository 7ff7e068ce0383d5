// The Gregorian calendar, for systems that lack the file-time conversions.
#pragma once

#include "platform/services.h"

namespace platform {

// True, and `time` set, when date and time exist and the year lies in 1601 to 30827.
[[nodiscard]] bool ToFileTime(const SystemTime& broken_down, FileTime& time);

// REQUIRES: `time` is not negative.
SystemTime FromFileTime(FileTime time);

}  // namespace platform
