// `epgshell now`: what is on, and what follows, a line for each station.
#pragma once

#include <cstdint>
#include <optional>

#include "app/guide_view.h"
#include "app/options.h"
#include "app/run_command.h"

namespace shell {

struct NowAndNext {
  std::optional<GuideView::Broadcast> now;   // of those that are on, the last to begin
  std::optional<GuideView::Broadcast> next;  // the next to begin, within a day
};

NowAndNext FindNowAndNext(const GuideView& view, std::int32_t station, std::int32_t at);

ExitStatus ShowNowScreen(const GuideView& view, const Options& options);

}  // namespace shell
