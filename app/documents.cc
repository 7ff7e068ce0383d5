#include "app/documents.h"

#include <filesystem>
#include <system_error>

#include "app/system.h"

namespace shell {

std::string DocumentPath(const std::string& name) {
  std::error_code error;
  const auto folder = std::filesystem::path(ProgramPath()).parent_path();
  const auto installed = (folder / EPG_DOCUMENTS_FOLDER / "docs" / name).lexically_normal();
  return std::filesystem::exists(installed, error) ? installed.string() : "docs/" + name;
}

}  // namespace shell
