// Writes a finished guide in the plug-in's cache format.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "tools/epgcache/guide.h"
#include "tools/epgcache/target_text.h"

namespace epgcache {

struct Written {
  std::uint64_t stations = 0;
  std::uint64_t programmes = 0;  // that broadcasts share
  std::uint64_t items = 0;
  Unencodable unencodable;
};

// `write` gets the file's bytes, piece by piece. What it throws comes through.
Written WriteCache(const Guide& guide, TargetText& text,
                   const std::function<void(std::string_view)>& write);

}  // namespace epgcache
