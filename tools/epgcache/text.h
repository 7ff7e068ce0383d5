// Small text helpers. Letters are ASCII letters.
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

inline std::string_view Trimmed(std::string_view text) {
  if (IsBlank(text)) return {};
  const std::size_t first = text.find_first_not_of(kBlanks);
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// A text from outside, made safe to show: without control characters or line breaks.
inline std::string Shown(std::string_view text) {
  std::string shown(text);
  for (std::size_t i = 0; i < shown.size(); ++i) {
    const auto byte = static_cast<unsigned char>(shown[i]);
    // Those behind C2 in UTF-8 are controls as well.
    const bool is_second = i > 0 && text[i - 1] == '\xc2' && byte >= 0x80 && byte < 0xa0;
    if (byte < 0x20 || byte == 0x7f || is_second) shown[i] = '?';
  }
  return shown;
}

}  // namespace epgcache
