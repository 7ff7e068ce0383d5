// Scripts of the console program: one call a line.
//
//   InitSchedule("", "", "samples/week")
//   GetProgramData(0, 12, "$Title[$(: )$EpisodeTitle]")   an integer or a text an argument
//   think                                                 ticks the browser once
//   # a comment
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace shell {

using Argument = std::variant<std::int32_t, std::string>;

struct Call {
  std::size_t line;    // from 1
  std::string method;  // empty for a tick
  std::vector<Argument> arguments;
};

struct ScriptFault {
  std::size_t line;
  std::string reason;
};

// Reads a whole script. The calls are of use only when there is no fault.
void ParseScript(std::string_view text, std::vector<Call>& calls, std::vector<ScriptFault>& faults);

// A text in double quotes, in the escapes that scripts take; bytes from 0x80 stand for themselves.
std::string Quoted(std::string_view text);

}  // namespace shell
