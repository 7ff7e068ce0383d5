// `epgshell find`: the broadcasts whose texts hold some words.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

// kCallFailed when nothing is found, which is told on standard error.
ExitStatus ShowFindScreen(const GuideView& view, const Options& options);

}  // namespace shell
