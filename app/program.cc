#include "app/program.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "app/options.h"
#include "app/run_command.h"
#include "app/show_command.h"
#include "app/system.h"

namespace {

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

int Run(int argc, char** argv) {
  int status = shell::kNotRun;
  const auto options = shell::ReadOptions(argc, argv, status);
  if (!options) return status;
  // A path, so that the loader does not search its folders for it.
  const std::string plugin = options->plugin.empty()
                                 ? DefaultPlugin()
                                 : std::filesystem::absolute(options->plugin).string();
  return options->command == shell::Command::kRun ? shell::RunScript(plugin, options->script)
                                                  : shell::ShowSchedule(plugin, *options);
}

}  // namespace

int RunEpgshell(int argc, char** argv) {
  const shell::Streams streams;
  try {
    return Run(argc, argv);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "epgshell: %s\n", error.what());
    return shell::kNotRun;
  }
}
