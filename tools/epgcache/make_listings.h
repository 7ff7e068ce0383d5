// Makes a listings file out of guides, and says what it did.
#pragma once

#include "tools/epgcache/options.h"

namespace epgcache {

// The exit status; what has been done, and where inputs are at fault, goes to standard error.
// Throws Failure where nothing can be written.
int MakeListings(const Options& options);

}  // namespace epgcache
