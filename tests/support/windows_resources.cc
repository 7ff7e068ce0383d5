#include <windows.h>
// After that header.
#include <psapi.h>

#include "tests/support/resources.h"

namespace epg_test {

namespace {

PROCESS_MEMORY_COUNTERS Counters() {
  PROCESS_MEMORY_COUNTERS counters = {};
  ::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters);
  return counters;
}

}  // namespace

std::int64_t PeakMemory() {
  return static_cast<std::int64_t>(Counters().PeakWorkingSetSize / 1024);
}
std::int64_t UsedMemory() { return static_cast<std::int64_t>(Counters().WorkingSetSize / 1024); }

int OpenHandles() {
  DWORD count = 0;
  if (::GetProcessHandleCount(::GetCurrentProcess(), &count) != 0 && count != 0) {
    return static_cast<int>(count);
  }
  // Wine does not count them, but gives the lowest that is free, which are multiples of 4.
  const HANDLE lowest = ::CreateEventA(nullptr, FALSE, FALSE, nullptr);
  ::CloseHandle(lowest);
  return static_cast<int>(reinterpret_cast<std::intptr_t>(lowest) / 4);
}

}  // namespace epg_test
