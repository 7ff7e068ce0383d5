#include "app/display_text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

namespace shell {

namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Marks that combine with the character before them, and joiners.
constexpr Range kNoColumn[] = {
    {0x300, 0x36f},    {0x483, 0x489},   {0x591, 0x5bd},   {0x610, 0x61a},   {0x64b, 0x65f},
    {0x670, 0x670},    {0x6d6, 0x6dc},   {0x900, 0x902},   {0x93c, 0x93c},   {0x941, 0x948},
    {0xe31, 0xe31},    {0xe34, 0xe3a},   {0xe47, 0xe4e},   {0x1ab0, 0x1aff}, {0x1dc0, 0x1dff},
    {0x200b, 0x200d},  {0x20d0, 0x20ff}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}, {0xfeff, 0xfeff},
    {0xe0100, 0xe01ef}};

// East Asian characters and emoji.
constexpr Range kTwoColumns[] = {
    {0x1100, 0x115f},   {0x2e80, 0x303e},   {0x3041, 0x4dbf},   {0x4e00, 0xa4cf},  {0xa960, 0xa97f},
    {0xac00, 0xd7a3},   {0xf900, 0xfaff},   {0xfe30, 0xfe6f},   {0xff00, 0xff60},  {0xffe0, 0xffe6},
    {0x1f300, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f900, 0x1f9ff}, {0x20000, 0x3fffd}};

template <std::size_t kCount>
bool IsIn(const Range (&ranges)[kCount], std::uint32_t code) {
  const Range* const found = std::lower_bound(
      std::begin(ranges), std::end(ranges), code,
      [](const Range& range, std::uint32_t wanted) { return range.last < wanted; });
  return found != std::end(ranges) && code >= found->first;
}

// Controls, and what turns the direction of writing.
bool Steers(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || (code >= 0x200e && code <= 0x200f) ||
         (code >= 0x2028 && code <= 0x202e) || (code >= 0x2060 && code <= 0x206f);
}

struct Glyph {
  std::string bytes;  // as they are to be shown
  int columns;
};

// The character of a byte from 0x80 in Windows-1252.
std::string CodePageCharacter(unsigned char byte) {
  static constexpr const char* kHigh[32] = {
      "\u20ac", "?",      "\u201a", "\u0192", "\u201e", "\u2026", "\u2020", "\u2021",
      "\u02c6", "\u2030", "\u0160", "\u2039", "\u0152", "?",      "\u017d", "?",
      "?",      "\u2018", "\u2019", "\u201c", "\u201d", "\u2022", "\u2013", "\u2014",
      "\u02dc", "\u2122", "\u0161", "\u203a", "\u0153", "?",      "\u017e", "\u0178"};
  if (byte < 0xa0) return kHigh[byte - 0x80];
  return {static_cast<char>(0xc0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3f))};
}

// Takes the first character off a text that is not empty.
Glyph TakeGlyph(std::string_view& text) {
  const auto byte = [&text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned char lead = byte(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xc2 ? 0
                             : lead < 0xe0 ? 2
                             : lead < 0xf0 ? 3
                             : lead < 0xf5 ? 4
                                           : 0;
  std::uint32_t code = length == 1 ? lead : lead & (0x7fu >> length);
  bool valid = length != 0 && text.size() >= length;
  for (std::size_t at = 1; valid && at < length; ++at) {
    valid = (byte(at) & 0xc0) == 0x80;
    code = code << 6 | (byte(at) & 0x3fu);
  }
  // Not the shortest form, a surrogate, or beyond the last character.
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (!valid || code < kSmallest[length] || (code >= 0xd800 && code < 0xe000) || code > 0x10ffff) {
    text.remove_prefix(1);
    return {CodePageCharacter(lead), 1};
  }
  std::string bytes(text.substr(0, length));
  text.remove_prefix(length);
  if (Steers(code)) return {" ", 1};
  return {std::move(bytes), IsIn(kNoColumn, code) ? 0 : IsIn(kTwoColumns, code) ? 2 : 1};
}

// The longest beginning of a text that fits, and the columns that it takes.
std::string TakeColumns(std::string_view text, int columns, int& taken) {
  std::string shown;
  taken = 0;
  while (!text.empty()) {
    const Glyph glyph = TakeGlyph(text);
    if (taken + glyph.columns > columns) break;
    shown += glyph.bytes;
    taken += glyph.columns;
  }
  return shown;
}

}  // namespace

std::string Shown(std::string_view text, bool ascii) {
  std::string shown;
  while (!text.empty()) {
    const Glyph glyph = TakeGlyph(text);
    if (ascii && static_cast<unsigned char>(glyph.bytes[0]) >= 0x80) {
      shown.append(static_cast<std::size_t>(glyph.columns), '?');
    } else {
      shown += glyph.bytes;
    }
  }
  return shown;
}

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  for (char& c : lowered) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
  return lowered;
}

int ColumnsOf(std::string_view text) {
  int columns = 0;
  while (!text.empty()) columns += TakeGlyph(text).columns;
  return columns;
}

std::string FitColumns(std::string_view text, int columns, std::string_view ellipsis) {
  const bool fits = ColumnsOf(text) <= columns;
  const int kept = fits ? columns : std::max(0, columns - ColumnsOf(ellipsis));
  int taken = 0;
  std::string shown = TakeColumns(text, kept, taken);
  if (!fits && columns > ColumnsOf(ellipsis)) {
    while (!shown.empty() && shown.back() == ' ') {
      shown.pop_back();
      --taken;
    }
    shown += ellipsis;
    taken += ColumnsOf(ellipsis);
  }
  return shown.append(static_cast<std::size_t>(std::max(0, columns - taken)), ' ');
}

std::vector<std::string> WrapColumns(std::string_view text, int columns) {
  std::vector<std::string> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view paragraph = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    std::string line;
    int used = 0;
    const auto finish = [&] {
      lines.push_back(std::move(line));
      line.clear();
      used = 0;
    };
    while (!paragraph.empty()) {
      const std::size_t blank = std::min(paragraph.find(' '), paragraph.size());
      std::string_view word = paragraph.substr(0, blank);
      paragraph.remove_prefix(std::min(blank + 1, paragraph.size()));
      if (used != 0 && used + 1 + ColumnsOf(word) > columns) finish();
      if (used != 0) {
        line += ' ';
        ++used;
      }
      // A word that is longer than a line goes on in the next one.
      while (!word.empty()) {
        const Glyph glyph = TakeGlyph(word);
        if (used != 0 && used + glyph.columns > columns) finish();
        line += glyph.bytes;
        used += glyph.columns;
      }
    }
    finish();
  }
  return lines;
}

}  // namespace shell
