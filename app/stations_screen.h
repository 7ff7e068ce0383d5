// `epgshell stations`: the stations, a line for each.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

ExitStatus ShowStationsScreen(const GuideView& view, const Options& options);

}  // namespace shell
