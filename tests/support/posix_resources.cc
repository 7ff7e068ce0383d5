#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/support/resources.h"

namespace epg_test {

std::int64_t PeakMemory() {
  rusage usage = {};
  return ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

std::int64_t UsedMemory() {
  std::int64_t pages = 0;
  std::int64_t resident = 0;
  std::ifstream("/proc/self/statm") >> pages >> resident;
  return resident * ::sysconf(_SC_PAGESIZE) / 1024;
}

int OpenHandles() {
  const std::filesystem::directory_iterator files("/proc/self/fd");
  return static_cast<int>(std::distance(begin(files), end(files)));
}

}  // namespace epg_test
