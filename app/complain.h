// What goes wrong, told to the person at the keyboard.
#pragma once

#include <cstdio>
#include <string>

#include "app/display_text.h"

namespace shell {

// Writes a line to standard error, in one piece.
inline void Complain(const std::string& text) {
  const std::string line = text + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

// The same with the program's name before it. Texts of listings, or names of files, cannot steer
// the terminal.
inline void ComplainAsShell(const std::string& text) { Complain("epgshell: " + Shown(text)); }

inline void ComplainOfPlugin(const std::string& error) {
  ComplainAsShell("cannot use the plug-in: " + error);
  ComplainAsShell("--plugin FILE names the plug-in to load; the file is called epgbrowser.so");
}

}  // namespace shell
