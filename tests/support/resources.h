// What a process uses of its system.
#pragma once

#include <cstdint>

namespace epg_test {

// The most memory that has been in use so far, and what is in use now, in KB.
std::int64_t PeakMemory();
std::int64_t UsedMemory();

// How many files and other objects of the system this process has open.
int OpenHandles();

}  // namespace epg_test
