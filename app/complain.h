// What goes wrong, reported to the user.
#pragma once

#include <cstdio>
#include <string>

#include "app/system.h"
#include "text/utf8.h"

namespace shell {

// Writes a line to standard error in one piece. On a terminal, control characters in texts of
// listings and names of files are made harmless; in a pipe the bytes stay as they are.
inline void Complain(const std::string& text) {
  const std::string line = (ErrorsAreShown() ? ForTerminal(text) : text) + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

// The same with the program's name before it.
inline void ComplainAsShell(const std::string& text) { Complain("epgshell: " + text); }

inline void ComplainOfPlugin(const std::string& error) {
  ComplainAsShell("cannot use the plug-in: " + error);
  ComplainAsShell("--plugin FILE names the plug-in to load; the file is called " EPG_MODULE_FILE);
}

}  // namespace shell
