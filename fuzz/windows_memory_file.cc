#include <filesystem>
#include <fstream>
#include <string>

#include "fuzz/fuzz_support.h"

namespace fuzz {

ORVANE::MSTR MemoryFile(std::string_view content) {
  // Small, and read again at once: it hardly ever leaves the system's cache.
  static const std::string name =
      (std::filesystem::temp_directory_path() / "epg-fuzz-").string() + std::to_string(std::rand());
  std::ofstream file(name, std::ios::binary | std::ios::trunc);
  file.write(content.data(), static_cast<std::streamsize>(content.size()));
  Check(file.flush().good(), "a file can be written");
  return name.c_str();
}

}  // namespace fuzz
