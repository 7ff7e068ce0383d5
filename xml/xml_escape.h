// Text made safe to stand in XML.
#pragma once

#include <string_view>

#include "host/mstr.h"

// A copy in which '&', '<', '>', quotation mark and apostrophe are references.
ORVANE::MSTR XmlEscape(std::string_view text);
