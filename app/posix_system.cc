#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "app/system.h"

namespace shell {

// POSIX streams already do.
Streams::Streams() = default;
Streams::~Streams() { std::fflush(stdout); }

bool ErrorsAreShown() { return ::isatty(STDERR_FILENO) != 0; }
bool ResultsAreShown() { return ::isatty(STDOUT_FILENO) != 0; }

int TerminalColumns() {
  winsize size = {};
  const bool told = ResultsAreShown() && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0;
  return told ? size.ws_col : 0;
}

bool TerminalTakesColours() {
  const char* const type = std::getenv("TERM");
  return ResultsAreShown() && (type == nullptr || std::strcmp(type, "dumb") != 0);
}

bool TerminalTakesUtf8() { return false; }

std::string ProgramPath() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

// On POSIX they already are.
void ShowBoxesAsText(const std::string& /*plugin_path*/) {}

}  // namespace shell
