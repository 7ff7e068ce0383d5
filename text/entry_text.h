// How an entry of the log, or a message box, is written to standard error.
#pragma once

#include <string>
#include <string_view>

#include "text/utf8.h"

// What comes before a message box's text.
inline std::string BoxPrefix(std::string_view caption) {
  return "message box [" + std::string(caption) + "]: ";
}

// Prefix, text and a line end. A line feed within the text is followed by two blanks, so that
// nothing in a text looks like an entry of its own. A text that is `shown` on a terminal does not
// steer it.
inline std::string EntryText(std::string_view prefix, std::string_view text, bool shown) {
  std::string entry(prefix);
  for (const char c : shown ? ForTerminal(text) : std::string(text)) {
    entry += c;
    if (c == '\n') entry += "  ";
  }
  return entry += '\n';
}
