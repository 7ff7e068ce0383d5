#include "app/screen.h"

#include <cstdio>

#include "app/complain.h"
#include "app/display_text.h"

namespace shell {

void Screen::Print(const std::string& line) const {
  // Colours are not part of what Shown may touch; a terminal that is not UTF-8 does without.
  const std::string whole = (terminal_.ascii ? shell::Shown(line, true) : line) + '\n';
  std::fwrite(whole.data(), 1, whole.size(), stdout);
}

void Screen::Wrap(const std::string& text) const {
  for (const std::string& line : WrapColumns(text, terminal_.columns)) Print(line);
}

std::string Screen::Bold(const std::string& text) const {
  return terminal_.colours ? "\033[1m" + text + "\033[0m" : text;
}

ExitStatus Screen::Finish() {
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return kAllDone;
  ComplainAsShell("cannot write the guide to standard output");
  return kCallFailed;
}

}  // namespace shell
