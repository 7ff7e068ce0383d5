#include "app/now_screen.h"

#include <algorithm>
#include <string>
#include <vector>

#include "app/display_text.h"
#include "app/local_time.h"
#include "app/screen.h"

namespace shell {

namespace {

constexpr int kBarColumns = 8;

// How far a broadcast is, as "###.....".
std::string Bar(const GuideView::Broadcast& broadcast, std::int32_t at) {
  const std::int64_t length = std::int64_t{broadcast.end} - broadcast.start;
  const std::int64_t done = (std::int64_t{at} - broadcast.start) * kBarColumns / length;
  const auto full = static_cast<std::size_t>(std::clamp<std::int64_t>(done, 0, kBarColumns));
  return std::string(full, '#') + std::string(kBarColumns - full, '.');
}

}  // namespace

NowAndNext FindNowAndNext(const GuideView& view, std::int32_t station, std::int32_t at) {
  NowAndNext found;
  const std::int32_t day_later = GuideView::Clamped(std::int64_t{at} + kMinutesOfDay);
  for (const GuideView::Broadcast& broadcast : view.Broadcasts(station, at, day_later)) {
    if (broadcast.start <= at) {
      found.now = broadcast;
    } else {
      found.next = broadcast;
      break;
    }
  }
  return found;
}

ExitStatus ShowNowScreen(const GuideView& view, const Options& options) {
  const auto at = view.FindTime(options.at, 1);
  const auto stations = at ? view.FindStations(options.stations) : std::nullopt;
  if (!stations) return kCallFailed;
  const Screen screen;
  Guide& guide = view.Asked();
  int widest = 0;
  for (const std::int32_t station : *stations)
    widest = std::max(widest, ColumnsOf(guide.StationName(station)));
  const int name_columns = std::min(widest, std::max(8, screen.Columns() / 4));
  // "NAME  20:00-21:00 ###.....  TITLE  21:00 TITLE"
  const int rest = std::max(8, screen.Columns() - name_columns - 2 - 11 - 1 - kBarColumns - 2);
  const int title_columns = std::max(4, (rest - 8) * 3 / 5);
  const int next_columns = std::max(0, rest - 8 - title_columns);

  if (*at != view.Now()) screen.Print(view.When(*at));
  for (const std::int32_t station : *stations) {
    const auto hour = [&view](std::int32_t time) { return HourText(time + view.LocalOffset()); };
    const auto [now, next] = FindNowAndNext(view, station, *at);
    std::string line =
        screen.Bold(FitColumns(guide.StationName(station), name_columns, screen.Ellipsis())) + "  ";
    if (now) {
      line += hour(now->start) + '-' + hour(now->end) + ' ' + Bar(*now, *at) + "  ";
      line += FitColumns(guide.ProgramName(station, now->index), title_columns, screen.Ellipsis());
    } else {
      line += FitColumns("nothing is on", 11 + 1 + kBarColumns + 2 + title_columns, "");
    }
    if (next && next_columns > 0) {
      line += "  " + hour(next->start) + ' ' +
              FitColumns(guide.ProgramName(station, next->index), next_columns, screen.Ellipsis());
    }
    line.erase(line.find_last_not_of(' ') + 1);
    screen.Print(line);
  }
  return Screen::Finish();
}

}  // namespace shell
