#include "app/program.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/documents.h"
#include "app/guide_command.h"
#include "app/run_command.h"
#include "app/system.h"

namespace {

constexpr const char* kUsage =
    "usage: epgshell [--plugin FILE] guide LISTINGS [--at TIME] [--hours N]\n"
    "                [--stations LIST] [--details STATION [--template TEXT]]\n"
    "       epgshell [--plugin FILE] run [SCRIPT | -]\n"
    "       epgshell --help | --version\n";

constexpr const char* kHelp =
    "\n"
    "Loads the programme guide plug-in as its engine would, and shows a listings file\n"
    "as a guide, or runs script calls.\n"
    "\n"
    "  guide        show LISTINGS (with or without its .xml): stations as rows, time as\n"
    "               columns, three hours from now, or from the start of the listings\n"
    "                 --at TIME         from this local time: 20:15, \"tomorrow 8pm\",\n"
    "                                   \"2026-11-23 20:15\", \"23 Nov\"\n"
    "                 --hours N         so many hours\n"
    "                 --stations LIST   these stations: indexes (7, 0-9) or names, also in\n"
    "                                   part, separated by commas\n"
    "                 --details STATION one station's programmes with their details\n"
    "                 --template TEXT   those details, in the language of GetProgramData\n"
    "  run          run the calls of SCRIPT, or of standard input, one a line:\n"
    "                 InitSchedule(\"\", \"\", \"samples/week\")\n"
    "                 GetStationCount()\n"
    "               and print one line for each: an integer, a text in double quotes,\n"
    "               ok, or failed. The engine's log goes to standard error.\n"
    "  --plugin     the plug-in to load (default: " EPG_MODULE_FILE
    " beside this program,\n"
    "               or where it is installed)\n"
    "\n"
    "Times are local, by the offset from UTC that is in force now. The guide uses\n"
    "colours on a terminal, unless NO_COLOR is set; in a pipe it is as wide as COLUMNS\n"
    "says, or 80.\n"
    "\n"
    "Exit status: 0 all was shown or every call succeeded, 1 there is nothing to show, a\n"
    "call failed or a result could not be written, 2 nothing was done.\n";

int Misused(const std::string& what) {
  std::fprintf(stderr, "epgshell: %s\n%s", what.c_str(), kUsage);
  return shell::kNotRun;
}

int Tell(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0) return shell::kAllDone;
  std::fputs("epgshell: cannot write to standard output\n", stderr);
  return shell::kCallFailed;
}

// The module beside this program, or else in the folder where both are installed to.
std::string DefaultPlugin() {
  std::error_code error;
  const auto folder = std::filesystem::path(shell::ProgramPath()).parent_path();
  const auto beside = folder / EPG_MODULE_FILE;
  const auto installed = (folder / EPG_MODULE_FOLDER / EPG_MODULE_FILE).lexically_normal();
  const bool use_installed =
      !std::filesystem::exists(beside, error) && std::filesystem::exists(installed, error);
  return (use_installed ? installed : beside).string();
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
  // A path, so that the loader does not search its folders for it.
  plugin = plugin.empty() ? DefaultPlugin() : std::filesystem::absolute(plugin).string();
  const std::vector<std::string> rest(arguments.begin() + static_cast<std::ptrdiff_t>(next),
                                      arguments.end());
  if (std::find(rest.begin(), rest.end(), "--help") != rest.end()) {
    return Tell(std::string(kUsage) + kHelp);
  }
  if (command == "guide") {
    std::string error;
    const auto options = shell::ReadGuideOptions(rest, error);
    return options ? shell::ShowGuide(plugin, *options) : Misused(error);
  }
  if (command != "run") return Misused("unknown command " + command + "; there are guide and run");
  if (rest.size() > 1) return Misused("run takes one script, not also " + rest[1]);
  return shell::RunScript(plugin, rest.empty() ? "-" : rest[0]);
}

}  // namespace

int RunEpgshell(int argc, char** argv) {
  const shell::Streams streams;
  try {
    return Main({argv + 1, argv + argc});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "epgshell: %s\n", error.what());
    return shell::kNotRun;
  }
}
