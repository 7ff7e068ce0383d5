// The texts of XMLTV descriptions, cleaned up.
#pragma once

#include "host/mstr.h"

// A description with the numeric references and line-break tags resolved that its file has escaped
// once more: "It&#8217;s<br>so" gets the system code page's apostrophe and a line feed.
ORVANE::MSTR ReParse(ORVANE::MSTR text);
