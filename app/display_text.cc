#include "app/display_text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "app/width_table.h"
#include "text/utf8.h"
#include "text/windows_1252.h"

namespace shell {

namespace {

template <std::size_t kCount>
bool IsIn(const CodeRange (&ranges)[kCount], char32_t code) {
  const CodeRange* const found =
      std::lower_bound(std::begin(ranges), std::end(ranges), code,
                       [](const CodeRange& range, char32_t wanted) { return range.last < wanted; });
  return found != std::end(ranges) && code >= found->first;
}

struct Glyph {
  std::string bytes;  // as they are to be shown
  int columns;
};

// Selects the emoji form of a character, which is two columns wide.
constexpr char32_t kPictureSelector = U'\ufe0f';

// Takes the first character off a text that is not empty, with a picture selector after it.
Glyph TakeGlyph(std::string_view& text) {
  const Utf8Character character = DecodeUtf8(text);
  const bool is_utf8 = character.bytes != 0;
  const char32_t code = is_utf8 ? character.code : FromWindows1252(text[0]);
  text.remove_prefix(is_utf8 ? character.bytes : 1);
  if (SteersTerminal(code)) return {is_utf8 ? " " : "?", 1};
  // At the start of a text it would apply to whatever precedes the text on the screen.
  if (code == kPictureSelector) return {"", 0};
  Glyph glyph = {EncodeUtf8(code), IsIn(kNoColumn, code) ? 0 : IsIn(kTwoColumns, code) ? 2 : 1};
  // A blank has no emoji form; it may also replace a control character.
  if (const Utf8Character next = DecodeUtf8(text);
      next.code == kPictureSelector && glyph.columns != 0 && code != U' ') {
    glyph.bytes += text.substr(0, next.bytes);
    glyph.columns = 2;
    text.remove_prefix(next.bytes);
  }
  return glyph;
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
