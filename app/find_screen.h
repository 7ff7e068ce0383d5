// `epgshell find`: the broadcasts whose texts contain some words.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

// kCallFailed, reported on standard error, when nothing is found.
ExitStatus ShowFindScreen(const GuideView& view, const Options& options);

}  // namespace shell
