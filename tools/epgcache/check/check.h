// Says whether the plug-in would take a listings file as it stands, and what it would make of it.
#pragma once

#include "tools/epgcache/options.h"

namespace epgcache {

// Writes the answer to standard output; 0 when the plug-in takes the file, otherwise 1. Throws
// Failure when the file cannot be read.
int CheckFile(const Options& options);

}  // namespace epgcache
