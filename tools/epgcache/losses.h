// What the plug-in would lose or alter of an XMLTV guide that it reads by itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/epgcache/options.h"

namespace epgcache {

struct Loss {
  std::uint64_t count;  // not 0
  std::string what;
};

struct Losses {
  // A line that says where the guide is not well-formed; empty when it is. What its elements mean
  // has been read up to there.
  std::string fault;
  std::vector<Loss> counts;
};

// Of the file `name`, which holds `bytes`.
Losses FindLosses(const std::string& name, std::string_view bytes, const Options& options);

}  // namespace epgcache
