// ASCII letters without regard to their case. All other bytes stay as they are.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

constexpr char LowerLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
}

inline std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = LowerLetter(c);
  return lowered;
}

constexpr bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return LowerLetter(x) == LowerLetter(y); });
}
