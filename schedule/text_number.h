// Numbers at the start of texts.
#pragma once

#include <cstdint>
#include <cstdlib>

// Leading blanks, a sign, decimal digits; 0 when there are none. Numbers beyond 32 bits are read in
// 64 and cut.
inline std::int32_t ReadNumber(const char* text) {
  // Nearly all are plain digits, for which the library's function takes five times as long.
  constexpr int kSafeDigits = 18;
  std::int64_t number = 0;
  int digits = 0;
  while (text[digits] >= '0' && text[digits] <= '9' && digits < kSafeDigits) {
    number = number * 10 + (text[digits++] - '0');
  }
  const bool complete = digits != 0 && (text[digits] < '0' || text[digits] > '9');
  return static_cast<std::int32_t>(complete ? number : std::strtoll(text, nullptr, 10));
}
