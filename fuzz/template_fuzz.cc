// Templates, expanded for a broadcast that has some fields and not others.

#include <algorithm>
#include <string>

#include "fuzz/fuzz_support.h"
#include "schedule/fields.h"
#include "schedule/schedule_item.h"
#include "schedule/template.h"
#include "schedule/text_blocks.h"

namespace {

constexpr std::string_view kSeparators = " .,:;(){}!\xa3$%^&*_-+=#~@?/|\"'\\[]";

// Expands the plain way, with a call for every group and for every template in an argument.
std::string Plain(const CScheduleItem& item, const std::string& text, std::size_t& at,
                  bool preceding_text) {
  std::string result;
  while (at < text.size()) {
    const char c = text[at++];
    if (c == ']') break;
    if (c == '[') {
      result += Plain(item, text, at, !result.empty());
    } else if (c == '\\') {
      if (at == text.size()) break;
      const char escaped = text[at++];
      result += escaped == 'n' ? "\n" : escaped == 't' ? "<t>" : std::string(1, escaped);
    } else if (c != '$') {
      result += c;
    } else {
      const std::size_t end = std::min(text.find_first_of(kSeparators, at), text.size());
      const std::string name = text.substr(at, end - at);
      at = end;
      const bool test_only = text[at] == '!';
      if (test_only) ++at;
      std::string argument;
      if (text[at] == '(') {
        for (int depth = 1; ++at < text.size(); argument += text[at]) {
          depth += (text[at] == '(') - (text[at] == ')');
          if (depth == 0) break;
        }
        at = std::min(at + 1, text.size());
      }
      if (name.empty()) {
        if (preceding_text) result += argument;
        continue;
      }
      std::size_t begin = 0;
      const std::string value = name == "Combination" ? Plain(item, argument, begin, false)
                                                      : GetField(item, name, argument);
      if (value.empty()) {
        for (int depth = 1; at < text.size() && depth > 0; ++at)
          depth += (text[at] == '[') - (text[at] == ']');
        return "";
      }
      if (!test_only) result += value;
    }
  }
  return result;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static CProgram program;
  static CScheduleItem item;
  static CTextBlocks texts;
  if (field_table.empty()) {
    FillFieldTable();
    program.title = texts.Keep("Tea");
    program.genre = texts.Keep("Film");
    program.star_rating = texts.Keep("3/5");
    item.program = &program;
    item.start = 223998960;
    item.new_marker = texts.Keep("Y");
  }
  const std::string_view text = fuzz::View(data, size);
  std::string result;
  try {
    result = ExpandTemplate(item, text, false);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  if (text.find_first_of("$[]\\") == std::string_view::npos) {
    fuzz::Check(result == text, "a plain text expands to itself");
  }
  // Escaped whole, any text is plain; only 'n' and 't' mean something after a backslash.
  if (text.find_first_of("nt") == std::string_view::npos) {
    std::string escaped;
    for (const char c : text) escaped.append("\\").append(1, c);
    fuzz::Check(ExpandTemplate(item, escaped, false) == text, "an escaped text expands to itself");
  }
  // The plain way recurses; inputs are too short to hurt it.
  std::size_t begin = 0;
  fuzz::Check(result == Plain(item, std::string(text), begin, false),
              "an expansion is that of the plain way");
  return 0;
}
