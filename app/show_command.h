// The commands that show a schedule: they load it, and hand it to what shows it.
#pragma once

#include <string>

#include "app/options.h"
#include "app/run_command.h"

namespace shell {

ExitStatus ShowSchedule(const std::string& plugin_path, const Options& options);

}  // namespace shell
