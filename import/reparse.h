// The texts of XMLTV descriptions, cleaned up.
#pragma once

#include <string>
#include <string_view>

// A description with the numeric references and line-break tags resolved that its file has escaped
// once more: "It&#8217;s<br>so" gets the system code page's apostrophe and a line feed.
std::string ReParse(std::string_view text);

// Whether there may be anything to resolve.
bool NeedsReParse(std::string_view text);
