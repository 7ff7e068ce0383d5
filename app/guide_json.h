// A schedule as JSON, in the form of docs/guide.schema.json.
#pragma once

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

// Prints what the command of the options shows.
ExitStatus PrintJson(const GuideView& view, const Options& options);

// Prints an object with the reason why there is no schedule.
ExitStatus PrintJsonFailure(const std::string& reason);

}  // namespace shell
