// Small things that are done with texts. Letters are ASCII's.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace epgcache {

inline constexpr std::string_view kBlanks = " \t\r\n";

inline bool IsBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

inline char Lower(char byte) {
  return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
}

// Whatever their case.
inline bool SameLetters(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return Lower(x) == Lower(y); });
}

inline bool BeginsWithLetters(std::string_view text, std::string_view beginning) {
  return SameLetters(text.substr(0, beginning.size()), beginning);
}

// A text from outside, made safe to show: nothing in it steers a terminal or breaks the line.
inline std::string Shown(std::string_view text) {
  std::string shown(text);
  for (char& byte : shown) {
    if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7f) byte = '?';
  }
  return shown;
}

}  // namespace epgcache
