// What the guide is shown on: how wide it is, and what it can show. POSIX.
#pragma once

namespace shell {

struct Terminal {
  int columns;   // never fewer than 20
  bool colours;  // the output is a colour-capable terminal, and nobody has asked for no colours
  bool utf8;     // the environment's character encoding
  bool ascii;    // the output is a terminal, and not one of that encoding

  // Of standard output. In a pipe or file the width is that of COLUMNS, or 80.
  static Terminal Find();
};

// Whether standard error or standard output is a terminal.
bool ErrorsAreShown();
bool ResultsAreShown();

}  // namespace shell
