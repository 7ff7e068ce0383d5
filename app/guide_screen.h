// `epgshell guide`: a schedule as a grid, or one station's programmes with their details.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

ExitStatus ShowGuideScreen(const GuideView& view, const Options& options);

}  // namespace shell
