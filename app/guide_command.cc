#include "app/guide_command.h"

#include <memory>

#include "app/complain.h"
#include "app/guide.h"
#include "app/guide_screen.h"
#include "app/load_progress.h"
#include "app/load_report.h"
#include "app/session.h"

namespace shell {

ExitStatus ShowGuide(const std::string& plugin_path, const GuideOptions& options) {
  const auto stem = FindListings(options.listings);
  if (!stem) return kCallFailed;
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
  if (!loaded) {
    report.TellFailure(file);
    return kCallFailed;
  }
  return ShowGuideScreen(guide, options);
}

}  // namespace shell
