// Scripts of the console program.

#include <string>
#include <variant>
#include <vector>

#include "app/script.h"
#include "fuzz/fuzz_support.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = fuzz::View(data, size);
  std::vector<shell::Call> calls;
  std::vector<shell::ScriptFault> faults;
  shell::ParseScript(text, calls, faults);
  std::size_t line = 0;
  for (const auto& fault : faults) {
    fuzz::Check(fault.line > line && !fault.reason.empty(),
                "faults come line by line, with reasons");
    line = fault.line;
  }
  // What was understood can be written down and is understood again.
  std::string script;
  for (const auto& call : calls) {
    script += call.method.empty() ? "think" : call.method + "(";
    const char* separator = "";
    for (const auto& argument : call.arguments) {
      const auto* const number = std::get_if<std::int32_t>(&argument);
      script += separator + (number != nullptr ? std::to_string(*number)
                                               : shell::Quoted(std::get<std::string>(argument)));
      separator = ",";
    }
    script += call.method.empty() ? "\n" : ")\n";
  }
  std::vector<shell::Call> again;
  faults.clear();
  shell::ParseScript(script, again, faults);
  fuzz::Check(faults.empty() && again.size() == calls.size(), "a written script is a script");
  for (std::size_t i = 0; i < calls.size() && i < again.size(); ++i) {
    fuzz::Check(again[i].method == calls[i].method && again[i].arguments == calls[i].arguments,
                "a written call is the call");
  }
  return 0;
}
