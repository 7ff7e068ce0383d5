#include "app/documents.h"

#include <filesystem>
#include <system_error>

namespace shell {

std::string ProgramPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string DocumentPath(const std::string& name) {
  std::error_code error;
  const auto folder = std::filesystem::path(ProgramPath()).parent_path();
  const auto installed = (folder / EPG_DOCUMENTS_FOLDER / "docs" / name).lexically_normal();
  return std::filesystem::exists(installed, error) ? installed.string() : "docs/" + name;
}

}  // namespace shell
