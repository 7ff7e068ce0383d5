// `epgshell run`: runs the calls of a script and prints a line for each.
#pragma once

#include <string>

namespace shell {

// The program's exit status: what became of a whole command.
enum ExitStatus { kAllDone = 0, kCallFailed = 1, kNotRun = 2 };

// `script` is a file name, or "-" for standard input.
ExitStatus RunScript(const std::string& plugin_path, const std::string& script);

}  // namespace shell
