// Converts texts in unknown encodings to UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "text/utf8.h"
#include "text/windows_1252.h"

// The text as UTF-8: a byte that is none is taken as its character in Windows-1252.
inline std::string AsUtf8(std::string_view text) {
  std::string utf8;
  while (!text.empty()) {
    const Utf8Character character = DecodeUtf8(text);
    if (character.bytes != 0) {
      utf8 += text.substr(0, character.bytes);
      text.remove_prefix(character.bytes);
    } else {
      utf8 += EncodeUtf8(FromWindows1252(text[0]));
      text.remove_prefix(1);
    }
  }
  return utf8;
}
