// Numbers at the start of texts.
#pragma once

#include <cstdint>
#include <cstdlib>

// Leading blanks, a sign, decimal digits; 0 when there are none. Numbers beyond 32 bits are read in
// 64 and cut.
inline std::int32_t ReadNumber(const char* text) {
  return static_cast<std::int32_t>(std::strtoll(text, nullptr, 10));
}
