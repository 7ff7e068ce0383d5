#include "app/run_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>
#include <variant>
#include <vector>

#include "app/complain.h"
#include "app/documents.h"
#include "app/script.h"
#include "app/session.h"
#include "app/system.h"
#include "host/engine.h"
#include "text/counted_text.h"
#include "text/near_miss.h"
#include "text/utf8.h"

namespace shell {

namespace {

// Far longer than any script; an endless input must not be read forever.
constexpr std::size_t kMostScriptBytes = std::size_t{64} << 20;

// Empty, or what went wrong.
std::string ReadAll(std::FILE* file, std::string& text) {
  char block[64 * 1024];
  for (;;) {
    errno = 0;
    const std::size_t count = std::fread(block, 1, sizeof block, file);
    text.append(block, count);
    if (text.size() > kMostScriptBytes) return "it is longer than 64 MiB";
    if (count == 0) return std::ferror(file) != 0 ? std::strerror(errno) : "";
  }
}

std::string ReadScript(const std::string& script, std::string& text) {
  if (script == "-") return ReadAll(stdin, text);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(script.c_str(), "rb"),
                                                             std::fclose);
  return file != nullptr ? ReadAll(file.get(), text) : std::strerror(errno);
}

std::string Place(const std::string& name, std::size_t line) {
  return name + ':' + std::to_string(line);
}

std::string ResultText(const ORVANE::MSSINSTANCE* result) {
  if (const auto* const integer = dynamic_cast<const ORVANE::MSSINTEGER*>(result)) {
    return std::to_string(integer->value);
  }
  if (const auto* const text = dynamic_cast<const ORVANE::MSSSTRING*>(result)) {
    return Quoted(ViewOf(text->value));
  }
  return "ok";
}

std::vector<std::string> MethodNames() {
  std::vector<std::string> names;
  if (const auto module = ORVANE::DescribeModule("EPGBROWSER")) {
    for (const ORVANE::METHODINFO& method : module->methods) names.push_back(method.name);
  }
  return names;
}

// Runs one call and prints its line at once, so that it comes before what the next call logs.
bool RunCall(Session& session, const Call& call, const std::string& place, bool shown) {
  ORVANE::CALL exec(&session.Instance(), place);
  for (const Argument& argument : call.arguments) {
    std::visit([&exec](const auto& value) { exec.AddArgument(value); }, argument);
  }
  const bool done = exec.Run(call.method.c_str());
  std::string line = (done ? ResultText(exec.Result()) : "failed") + '\n';
  if (shown) line = ForTerminal(line);
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
  return done;
}

}  // namespace

ExitStatus RunScript(const std::string& plugin_path, const std::string& script) {
  const std::string name = script == "-" ? "<stdin>" : script;
  std::string text;
  if (const std::string fault = ReadScript(script, text); !fault.empty()) {
    ComplainAsShell("cannot read the script " + name + ": " + fault);
    return kNotRun;
  }
  std::vector<Call> calls;
  std::vector<ScriptFault> faults;
  ParseScript(text, calls, faults);
  for (const ScriptFault& fault : faults) Complain(Place(name, fault.line) + ": " + fault.reason);
  if (!faults.empty()) return kNotRun;

  LogToStandardError();
  std::string error;
  const std::unique_ptr<Session> session = Session::Open(plugin_path, error);
  if (session == nullptr) {
    ComplainOfPlugin(error);
    return kNotRun;
  }
  bool known = true;
  for (const Call& call : calls) {
    if (!call.method.empty() && session->Instance().FindMethod(call.method.c_str()) == nullptr) {
      const std::string near = NearMiss(call.method, MethodNames());
      Complain(Place(name, call.line) + ": EPGBROWSER has no method " + call.method + "; " +
               (near.empty() ? DocumentPath("scripting.md") + " lists them all"
                             : "did you mean " + near + "?"));
      known = false;
    }
  }
  if (!known) return kNotRun;

  const bool shown = ResultsAreShown();
  ExitStatus status = kAllDone;
  for (const Call& call : calls) {
    if (call.method.empty()) {
      session->Think();
    } else if (!RunCall(*session, call, Place(name, call.line), shown)) {
      status = kCallFailed;
    }
  }
  if (std::ferror(stdout) != 0) {
    ComplainAsShell("cannot write the results");
    return kCallFailed;
  }
  return status;
}

}  // namespace shell
