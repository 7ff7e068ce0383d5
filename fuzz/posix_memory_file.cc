#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "fuzz/fuzz_support.h"

namespace fuzz {

ORVANE::MSTR MemoryFile(std::string_view content) {
  static const int file = ::memfd_create("listings", 0);
  Check(::ftruncate(file, 0) == 0 && ::pwrite(file, content.data(), content.size(), 0) ==
                                         static_cast<ssize_t>(content.size()),
        "a file in memory can be written");
  static const std::string name = "/proc/self/fd/" + std::to_string(file);
  return name.c_str();
}

}  // namespace fuzz
