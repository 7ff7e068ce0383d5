// What the guide is shown on: how wide it is, and what it can show.
#pragma once

namespace shell {

struct Terminal {
  int columns;   // never fewer than 20
  bool colours;  // the output is a colour-capable terminal, and colours are not disabled
  bool utf8;     // what is shown is UTF-8
  bool ascii;    // the output is a terminal, and not one of that encoding

  // Of standard output. In a pipe or file the width is that of COLUMNS, or 80.
  static Terminal Find();
};

}  // namespace shell
