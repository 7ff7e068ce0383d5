// What the guide is shown on: how wide it is, and what it can show. POSIX.
#pragma once

namespace shell {

struct Terminal {
  int columns;   // never fewer than 20
  bool colours;  // the output is a terminal of today, and nobody has asked for no colours
  bool utf8;     // the environment's character encoding
  bool ascii;    // the output is a terminal, and not one of that encoding

  // Of standard output. In a pipe or file the width is that of COLUMNS, or 80.
  static Terminal Find();
};

// Whether standard error is a terminal, where a progress line may come and go.
bool ErrorsAreShown();

}  // namespace shell
