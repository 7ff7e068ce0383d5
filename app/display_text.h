// Texts as a terminal shows them: in columns, not in bytes.
//
// Texts are UTF-8; an invalid byte counts as its character in Windows-1252, into which the plug-in
// converts references. Control characters, line ends included, are shown as blanks.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace shell {

// The text made safe for a terminal; with `ascii`, for one that shows nothing else: every other
// character becomes '?'.
std::string Shown(std::string_view text, bool ascii = false);

// Columns that the text takes: none for a combining mark, two for a wide character.
int ColumnsOf(std::string_view text);

// The text in exactly so many columns: cut, with `ellipsis` at its end, or filled with blanks.
std::string FitColumns(std::string_view text, int columns, std::string_view ellipsis);

// The text in lines of at most so many columns, broken at blanks where there are any. A line feed
// in the text begins a new line.
std::vector<std::string> WrapColumns(std::string_view text, int columns);

}  // namespace shell
