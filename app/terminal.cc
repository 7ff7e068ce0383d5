#include "app/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

namespace shell {

namespace {

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool SpeaksUtf8() {
  for (const char* const name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string_view locale = Environment(name);
    if (locale.empty()) continue;
    return locale.find("UTF-8") != std::string_view::npos ||
           locale.find("utf8") != std::string_view::npos;
  }
  return false;
}

}  // namespace

Terminal Terminal::Find() {
  constexpr int kFewest = 20;
  constexpr int kUsual = 80;
  const bool shown = ::isatty(STDOUT_FILENO) != 0;
  winsize size = {};
  int columns = 0;
  if (shown && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) columns = size.ws_col;
  if (columns == 0) {
    const std::string_view asked = Environment("COLUMNS");
    const auto [end, error] = std::from_chars(asked.data(), asked.data() + asked.size(), columns);
    if (error != std::errc() || columns <= 0) columns = kUsual;
  }
  const bool utf8 = SpeaksUtf8();
  const bool colours =
      shown && utf8 && Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  return {std::clamp(columns, kFewest, 1000), colours, utf8, shown && !utf8};
}

bool ErrorsAreShown() { return ::isatty(STDERR_FILENO) != 0; }
bool ResultsAreShown() { return ::isatty(STDOUT_FILENO) != 0; }

}  // namespace shell
