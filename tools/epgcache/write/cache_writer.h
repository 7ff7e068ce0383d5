// Writes a finished guide in the plug-in's cache format.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "tools/epgcache/merge/guide.h"
#include "tools/epgcache/write/target_text.h"

namespace epgcache {

struct Written {
  std::uint64_t stations = 0;
  std::uint64_t programmes = 0;  // that broadcasts share
  std::uint64_t items = 0;
  Unencodable unencodable;
  std::uint64_t slashes = 0;  // replaced in names of stations
};

// `write` gets the file's bytes, piece by piece. What it throws comes through.
Written WriteCache(const Guide& guide, TargetText& text,
                   const std::function<void(std::string_view)>& write);

}  // namespace epgcache
