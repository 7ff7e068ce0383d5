// What the fuzz targets share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "host/mstr.h"
#include "schedule/provider_data.h"

// Every target defines this; 0 always.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

inline std::string_view View(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// A fact that holds for every input.
inline void Check(bool holds, const char* fact) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", fact);
  std::abort();
}

// The name of a file, in memory alone, that holds `content` until the next call.
ORVANE::MSTR MemoryFile(std::string_view content);

// Checks what must hold of every finished schedule.
void CheckSchedule(const CProviderData& store);

}  // namespace fuzz
