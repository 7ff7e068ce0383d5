// Texts as a terminal shows them: in columns, not in bytes.
//
// A text is taken as UTF-8. What could steer a terminal, line ends included, is shown as a blank; a
// byte that is no UTF-8 as '?'.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace shell {

// Columns that the text takes: none for a combining mark, two for a wide character.
int ColumnsOf(std::string_view text);

// The text in exactly so many columns: cut, with `ellipsis` at its end, or filled with blanks.
std::string FitColumns(std::string_view text, int columns, std::string_view ellipsis);

// The text in lines of at most so many columns, broken at blanks where there are any. A line feed
// in the text begins a new line.
std::vector<std::string> WrapColumns(std::string_view text, int columns);

}  // namespace shell
