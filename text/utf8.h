// UTF-8, a character at a time, and texts made safe for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

struct Utf8Character {
  char32_t code;
  std::size_t bytes;  // 0 when the text does not begin with a character
};

// The first character of a text; what is not its shortest form, a surrogate, or beyond the last
// character is none.
constexpr Utf8Character DecodeUtf8(std::string_view text) {
  if (text.empty()) return {0, 0};
  const auto byte_at = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte_at(0);
  const std::size_t bytes = lead < 0x80   ? 1
                            : lead < 0xc2 ? 0
                            : lead < 0xe0 ? 2
                            : lead < 0xf0 ? 3
                            : lead < 0xf5 ? 4
                                          : 0;
  if (bytes == 0 || text.size() < bytes) return {0, 0};
  char32_t code = bytes == 1 ? lead : lead & (0x7fu >> bytes);
  for (std::size_t at = 1; at < bytes; ++at) {
    if ((byte_at(at) & 0xc0) != 0x80) return {0, 0};
    code = code << 6 | (byte_at(at) & 0x3fu);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  const bool is_none =
      code < kSmallest[bytes] || (code >= 0xd800 && code < 0xe000) || code > 0x10ffff;
  return is_none ? Utf8Character{0, 0} : Utf8Character{code, bytes};
}

// REQUIRES: a character.
inline std::string EncodeUtf8(char32_t code) {
  const auto trail = [code](unsigned shift) {
    return static_cast<char>(0x80 | ((code >> shift) & 0x3f));
  };
  if (code < 0x80) return {static_cast<char>(code)};
  if (code < 0x800) return {static_cast<char>(0xc0 | code >> 6), trail(0)};
  if (code < 0x10000) return {static_cast<char>(0xe0 | code >> 12), trail(6), trail(0)};
  return {static_cast<char>(0xf0 | code >> 18), trail(12), trail(6), trail(0)};
}

// Controls, and what turns the direction of writing.
constexpr bool SteersTerminal(char32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || (code >= 0x200e && code <= 0x200f) ||
         (code >= 0x2028 && code <= 0x202e) || (code >= 0x2060 && code <= 0x206f);
}

// A copy that does not steer the terminal that it is written to: line feeds stay, every other
// control becomes '?'. A byte that is no UTF-8 stands for a control from 80 to 9F, for a terminal
// of an 8-bit encoding.
inline std::string ForTerminal(std::string_view text) {
  std::string safe;
  while (!text.empty()) {
    const Utf8Character character = DecodeUtf8(text);
    const std::size_t bytes = character.bytes != 0 ? character.bytes : 1;
    const char32_t code =
        character.bytes != 0 ? character.code : static_cast<unsigned char>(text[0]);
    if (code != '\n' && SteersTerminal(code)) {
      safe += '?';
    } else {
      safe += text.substr(0, bytes);
    }
    text.remove_prefix(bytes);
  }
  return safe;
}
