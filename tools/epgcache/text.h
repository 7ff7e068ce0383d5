// Small text helpers. Letters are ASCII letters.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "text/letters.h"
#include "text/utf8.h"

namespace epgcache {

inline constexpr std::string_view kBlanks = " \t\r\n";

inline bool IsBlank(std::string_view text) {
  return text.find_first_not_of(kBlanks) == std::string_view::npos;
}

inline bool BeginsWithLetters(std::string_view text, std::string_view beginning) {
  return EqualIgnoringCase(text.substr(0, beginning.size()), beginning);
}

inline std::string_view Trimmed(std::string_view text) {
  if (IsBlank(text)) return {};
  const std::size_t first = text.find_first_not_of(kBlanks);
  return text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
}

// A text from outside, made safe to show: without control characters or line breaks.
inline std::string Shown(std::string_view text) {
  std::string shown = ForTerminal(text);
  std::replace(shown.begin(), shown.end(), '\n', '?');
  return shown;
}

}  // namespace epgcache
