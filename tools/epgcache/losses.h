// What the plug-in would lose or alter of a guide that it reads by itself.
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

// Of the file `name`, which holds `bytes`.
std::vector<Loss> FindLosses(const std::string& name, std::string_view bytes,
                             const Options& options);

}  // namespace epgcache
