#include "app/terminal.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "app/system.h"

namespace shell {

namespace {

std::string_view Environment(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

bool LocaleIsUtf8() {
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
  int columns = TerminalColumns();
  if (columns == 0) {
    const std::string_view asked = Environment("COLUMNS");
    const auto [end, error] = std::from_chars(asked.data(), asked.data() + asked.size(), columns);
    if (error != std::errc() || columns <= 0) columns = kUsual;
  }
  const bool utf8 = TerminalTakesUtf8() || LocaleIsUtf8();
  const bool colours = utf8 && TerminalTakesColours() && Environment("NO_COLOR").empty();
  return {std::clamp(columns, kFewest, 1000), colours, utf8, ResultsAreShown() && !utf8};
}

}  // namespace shell
