// What a run that writes no listings was asked for.
#pragma once

#include <cstdio>
#include <string_view>

#include "tools/epgcache/failure.h"

namespace epgcache {

// Writes it to standard output. Throws Failure.
inline void WriteAnswer(std::string_view text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) != 0) throw Failure("the answer cannot be written");
}

}  // namespace epgcache
