// Templates, expanded for a broadcast that has some fields and lacks others.

#include <string>

#include "fuzz/fuzz_support.h"
#include "schedule/program_details.h"
#include "schedule/schedule_item.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static CProgram program;
  static CScheduleItem item;
  if (field_table.empty()) {
    FillFieldTable();
    program.title = "Tea";
    program.genre = "Film";
    program.star_rating = "3/5";
    item.program = &program;
    item.start = 223998960;
    item.new_marker = "Y";
  }
  const std::string_view text = fuzz::View(data, size);
  ORVANE::MSTR result;
  try {
    result = ExpandTemplate(item, text, false);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  if (text.find_first_of("$[]\\") == std::string_view::npos) {
    fuzz::Check(result == text, "a plain text expands to itself");
  }
  // Escaped whole, any text is plain; only 'n' and 't' mean something behind a backslash.
  if (text.find_first_of("nt") == std::string_view::npos) {
    std::string escaped;
    for (const char c : text) escaped.append("\\").append(1, c);
    fuzz::Check(ExpandTemplate(item, escaped, false) == text, "an escaped text expands to itself");
  }
  // One level more changes nothing where brackets and parentheses stand in pairs.
  if (text.find_first_of("[]()\\") == std::string_view::npos) {
    const std::string group = "[" + std::string(text) + "]";
    const std::string argument = "[$Combination(" + std::string(text) + ")]";
    fuzz::Check(ExpandTemplate(item, group, false) == result, "a group gives its text");
    fuzz::Check(ExpandTemplate(item, argument, false) == result, "a combination gives its text");
  }
  return 0;
}
