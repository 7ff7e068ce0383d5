// `epgshell guide`: shows a listings file as a programme guide.
#pragma once

#include <string>

#include "app/guide_options.h"
#include "app/run_command.h"

namespace shell {

ExitStatus ShowGuide(const std::string& plugin_path, const GuideOptions& options);

}  // namespace shell
