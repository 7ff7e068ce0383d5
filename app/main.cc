#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/run_command.h"

namespace {

constexpr const char* kUsage =
    "usage: epgshell [--plugin FILE] run [SCRIPT | -]\n"
    "       epgshell --help | --version\n";

constexpr const char* kHelp =
    "\n"
    "Loads the programme guide plug-in as its engine would, and runs script calls on it.\n"
    "\n"
    "  run          run the calls of SCRIPT, or of standard input, one a line:\n"
    "                 InitSchedule(\"\", \"\", \"samples/week\")\n"
    "                 GetStationCount()\n"
    "               and print one line for each: an integer, a text in double quotes,\n"
    "               ok, or failed. The engine's log goes to standard error.\n"
    "  --plugin     the plug-in to load (default: epgbrowser.so beside this program)\n"
    "\n"
    "Exit status: 0 every call succeeded, 1 a call failed or its result could not be\n"
    "written, 2 nothing was run.\n";

int Misused(const std::string& what) {
  std::fprintf(stderr, "epgshell: %s\n%s", what.c_str(), kUsage);
  return shell::kNotRun;
}

int Tell(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  if (std::fflush(stdout) == 0) return shell::kAllDone;
  std::fputs("epgshell: cannot write to standard output\n", stderr);
  return shell::kCallFailed;
}

// The module beside this program.
std::string DefaultPlugin() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return (program.parent_path() / "epgbrowser.so").string();
}

int Main(const std::vector<std::string>& arguments) {
  std::string plugin;
  std::size_t next = 0;
  for (; next < arguments.size() && arguments[next].rfind("--", 0) == 0; ++next) {
    const std::string& option = arguments[next];
    constexpr std::string_view kPluginIs = "--plugin=";
    if (option == "--help") {
      return Tell(std::string(kUsage) + kHelp);
    }
    if (option == "--version") {
      return Tell("epgshell " EPG_VERSION "\n");
    }
    const bool joined = option.rfind(kPluginIs, 0) == 0;
    if (!joined && option != "--plugin") return Misused("unknown option " + option);
    if (joined) {
      plugin = option.substr(kPluginIs.size());
    } else if (next + 1 < arguments.size()) {
      plugin = arguments[++next];
    }
    if (plugin.empty()) return Misused("--plugin needs a file");
  }
  if (next == arguments.size()) return Misused("a command is missing");
  const std::string& command = arguments[next++];
  if (command != "run") return Misused("unknown command " + command);
  const std::string script = next < arguments.size() ? arguments[next++] : "-";
  if (next < arguments.size()) return Misused("run takes one script, not also " + arguments[next]);
  // A path, so that the loader does not search its folders for it.
  plugin = plugin.empty() ? DefaultPlugin() : std::filesystem::absolute(plugin).string();
  return shell::RunScript(plugin, script);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Main({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "epgshell: %s\n", error.what());
    return shell::kNotRun;
  }
}
