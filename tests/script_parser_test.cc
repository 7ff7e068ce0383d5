// The console program's script language and its way of writing results.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "app/script.h"

namespace {

// "LINE Name(arguments)" of every call, or "LINE: reason" of every fault, separated by '|'.
std::string Parsed(std::string_view script) {
  std::vector<shell::Call> calls;
  std::vector<shell::ScriptFault> faults;
  shell::ParseScript(script, calls, faults);
  std::string text;
  const auto add = [&text](const std::string& entry) { text += (text.empty() ? "" : "|") + entry; };
  for (const auto& fault : faults) add(std::to_string(fault.line) + ": " + fault.reason);
  if (!faults.empty()) return text;
  for (const auto& call : calls) {
    std::string entry = std::to_string(call.line) + ' ' + call.method + '(';
    for (const auto& argument : call.arguments) {
      if (entry.back() != '(') entry += ',';
      const auto* const number = std::get_if<std::int32_t>(&argument);
      entry += number != nullptr ? std::to_string(*number)
                                 : shell::Quoted(std::get<std::string>(argument));
    }
    add(entry + ')');
  }
  return text;
}

TEST(Script, LinesAreCallsTicksOrNothing) {
  const struct {
    std::string_view script;
    std::string calls;
  } rows[] = {
      {"", ""},
      {"\n \t\n# think\n  # x", ""},
      {"GetReady()", "1 GetReady()"},
      {"\n\tGetReady ( ) \t\r\nthink\r\n think ", "2 GetReady()|3 ()|4 ()"},
      {"think()", "1 think()"},
      {"A(1,-2,+3,-2147483648,2147483647,007)", "1 A(1,-2,3,-2147483648,2147483647,7)"},
      {"A( 1 ,\t\"b c\" )", "1 A(1,\"b c\")"},
      {R"(A("\\\"\n\t\r\x00\x7F\xfF"))", "1 A(\"\\\\\\\"\\n\\t\\r\\x00\\x7f\xff\")"},
      {"A(\"a\rb#('\")", "1 A(\"a\\rb#('\")"},
      {std::string_view("A(\"a\0b\")", 8), "1 A(\"a\\x00b\")"},
  };
  for (const auto& row : rows) EXPECT_EQ(Parsed(row.script), row.calls) << row.script;
}

TEST(Script, EveryFaultIsNamedWithItsLine) {
  const std::string kEscape = "1: unknown escape in a text: use \\\\, \\\", \\n, \\t, \\r or \\xHH";
  const std::string kArgument = "1: an argument is an integer or a text in double quotes";
  const struct {
    std::string_view script;
    std::string faults;
  } rows[] = {
      {"GetReady", "1: '(' expected after GetReady"},
      {"1()", "1: a call begins with a method's name"},
      {"A(1", "1: ',' or ')' expected after an argument"},
      {"A(1 2)", "1: ',' or ')' expected after an argument"},
      {"A(1,)", kArgument},
      {"A(-)", kArgument},
      {"A(x)", kArgument},
      {"A('x')", kArgument},
      {"A(", kArgument},
      {"A(2147483648)", "1: an integer does not fit into 32 bits"},
      {"A(-2147483649)", "1: an integer does not fit into 32 bits"},
      {"A(99999999999999999999999)", "1: an integer does not fit into 32 bits"},
      {"A(\"x)", "1: a text has no closing quotation mark"},
      {"A(\"x\\", kEscape},
      {"A(\"\\q\")", kEscape},
      {"A(\"\\x4\")", kEscape},
      {"A() # no", "1: nothing but blanks may follow ')'"},
      {"A();", "1: nothing but blanks may follow ')'"},
      {"A()\nthink twice\nB(\n", "2: '(' expected after think|3" + kArgument.substr(1)},
      {"A()\rB()", "1: nothing but blanks may follow ')'"},
  };
  for (const auto& row : rows) EXPECT_EQ(Parsed(row.script), row.faults) << row.script;
}

}  // namespace
