// What the program asks of the operating system. One source file implements it for each family of
// systems.
#pragma once

#include <string>

namespace shell {

// Makes the standard streams carry bytes as they are, and the terminal show UTF-8 where it can, for
// as long as it lives; what has been written is passed on at its end. To be made before anything is
// read or written.
class Streams {
 public:
  Streams();
  Streams(const Streams&) = delete;
  Streams& operator=(const Streams&) = delete;
  ~Streams();
};

// Whether standard error or standard output is a terminal.
bool ErrorsAreShown();
bool ResultsAreShown();

// The width of the terminal that standard output is, in columns; 0 if it is not a terminal or
// its width is unknown.
int TerminalColumns();

// Whether that terminal takes colours and other escape sequences.
bool TerminalTakesColours();

// Whether that terminal shows UTF-8 whatever the user's locale is.
bool TerminalTakesUtf8();

// The path of this program's file; empty if the system does not say.
std::string ProgramPath();

// Has the message boxes of a loaded plug-in written to standard error, where they would wait for a
// click.
void ShowBoxesAsText(const std::string& plugin_path);

}  // namespace shell
