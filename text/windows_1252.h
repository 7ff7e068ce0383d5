// The code page Windows-1252, between its bytes and UTF-16 code units.
//
// The five codes that it does not assign (81, 8D, 8F, 90, 9D) stand for themselves, as the page's
// own system has it.
#pragma once

#include <algorithm>
#include <iterator>
#include <optional>

// What the codes 80 to 9F stand for; the others stand for themselves.
inline constexpr char16_t kWindows1252Upper[] = {
    0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

constexpr char16_t FromWindows1252(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code >= 0x80 && code < 0xa0 ? kWindows1252Upper[code - 0x80] : code;
}

// Nothing for a unit that the page does not have.
constexpr std::optional<char> ToWindows1252(char16_t unit) {
  if (unit < 0x80 || (unit >= 0xa0 && unit <= 0xff)) return static_cast<char>(unit);
  const auto* const begin = std::begin(kWindows1252Upper);
  const auto* const found = std::find(begin, std::end(kWindows1252Upper), unit);
  if (found == std::end(kWindows1252Upper)) return std::nullopt;
  return static_cast<char>(0x80 + (found - begin));
}
