// Standard output, as the commands that show a schedule write it: in lines that fit.
#pragma once

#include <string>

#include "app/run_command.h"
#include "app/terminal.h"

namespace shell {

class Screen {
 public:
  Screen() : terminal_(Terminal::Find()) {}

  const Terminal& Shown() const { return terminal_; }
  int Columns() const { return terminal_.columns; }
  // What a cut text ends with.
  const char* Ellipsis() const { return terminal_.utf8 ? "\u2026" : "~"; }

  // A line that fits.
  void Print(const std::string& line) const;
  // A text of any length, in lines.
  void Wrap(const std::string& text) const;
  // The text in bold type, where the terminal has it.
  std::string Bold(const std::string& text) const;

  // Flushes the output. kCallFailed, reported on standard error, when something could not be
  // written.
  static ExitStatus Finish();

 private:
  const Terminal terminal_;
};

}  // namespace shell
