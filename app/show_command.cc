#include "app/show_command.h"

#include <memory>

#include "app/complain.h"
#include "app/find_screen.h"
#include "app/guide.h"
#include "app/guide_json.h"
#include "app/guide_page.h"
#include "app/guide_screen.h"
#include "app/guide_view.h"
#include "app/load_progress.h"
#include "app/load_report.h"
#include "app/now_screen.h"
#include "app/session.h"
#include "app/stations_screen.h"

namespace shell {

namespace {

ExitStatus Show(Guide& guide, const Options& options) {
  const GuideView view(guide);
  if (options.command == Command::kStations && !options.json)
    return ShowStationsScreen(view, options);
  if (!view.HasBroadcasts()) return kCallFailed;
  if (!options.html.empty()) return WriteGuidePage(view, options);
  if (options.json) return PrintJson(view, options);
  switch (options.command) {
    case Command::kNow:
      return ShowNowScreen(view, options);
    case Command::kFind:
      return ShowFindScreen(view, options);
    default:
      return ShowGuideScreen(view, options);
  }
}

}  // namespace

ExitStatus ShowSchedule(const std::string& plugin_path, const Options& options) {
  const auto stem = FindListings(options.listings);
  if (!stem) {
    return options.json ? PrintJsonFailure("there is no listings file " + options.listings)
                        : kCallFailed;
  }
  const LoadReport report;
  std::string error;
  const std::unique_ptr<Session> session = Session::Open(plugin_path, error);
  if (session == nullptr) {
    ComplainOfPlugin(error);
    return kNotRun;
  }
  Guide guide(*session);
  const std::string file = *stem + ".xml";
  bool loaded = false;
  {
    const LoadProgress progress(file);
    loaded = guide.Load(*stem);
  }
  if (loaded) return Show(guide, options);
  report.TellFailure(file);
  return options.json ? PrintJsonFailure(report.Failure(file)) : kCallFailed;
}

}  // namespace shell
