#include <windows.h>
// After that header.
#include <psapi.h>

#include "tests/support/test_support.h"

namespace epg_test {

std::int64_t PeakMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  if (::GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof counters) == 0) return 0;
  return static_cast<std::int64_t>(counters.PeakWorkingSetSize / 1024);
}

}  // namespace epg_test
