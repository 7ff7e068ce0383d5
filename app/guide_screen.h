// The guide of a loaded schedule on standard output, as a grid or as one station's details.
#pragma once

#include "app/guide.h"
#include "app/guide_options.h"
#include "app/run_command.h"

namespace shell {

// Faults, such as a station that is not there, are told on standard error.
ExitStatus ShowGuideScreen(Guide& guide, const GuideOptions& options);

}  // namespace shell
