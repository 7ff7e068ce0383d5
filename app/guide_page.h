// A schedule as a web page: one file that needs no network.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

// Writes the whole schedule, or the stations that the options name, to the file of the options.
// An existing file is kept when that fails, which is reported on standard error.
ExitStatus WriteGuidePage(const GuideView& view, const Options& options);

}  // namespace shell
