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
    "Exit status: 0 every call succeeded, 1 a call failed, 2 nothing was run.\n";

int Misused(const std::string& what) {
  std::fprintf(stderr, "epgshell: %s\n%s", what.c_str(), kUsage);
  return shell::kNotRun;
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
      std::fputs(kUsage, stdout);
      std::fputs(kHelp, stdout);
      return shell::kAllDone;
    }
    if (option == "--version") {
      std::puts("epgshell " EPG_VERSION);
      return shell::kAllDone;
    }
    if (option.rfind(kPluginIs, 0) == 0) {
      plugin = option.substr(kPluginIs.size());
    } else if (option == "--plugin" && next + 1 < arguments.size()) {
      plugin = arguments[++next];
    } else {
      return Misused(option == "--plugin" ? "--plugin needs a file" : "unknown option " + option);
    }
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
