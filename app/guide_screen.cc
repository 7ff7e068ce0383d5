#include "app/guide_screen.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/display_text.h"
#include "app/guide_grid.h"
#include "app/local_time.h"
#include "app/screen.h"

namespace shell {

namespace {

constexpr std::int32_t kUsualHours = 3;
constexpr std::int32_t kUsualDetailsHours = 24;
constexpr const char* kUsualTemplate =
    "$Title[$(: )$EpisodeTitle][ ($PublishDate)][, $Genre][, $StarRating][ ($Flags)]"
    "[\\n$Description][\\nWith $Actors][\\nDirected by $Director]";

ExitStatus ShowGrid(const GuideView& view, const std::vector<std::int32_t>& stations,
                    std::int32_t from, std::int32_t to) {
  const Screen screen;
  Guide& guide = view.Asked();
  GuideGrid grid = {from, to, view.Now(), view.LocalOffset(), {}};
  for (const std::int32_t station : stations) {
    GuideRow row = {guide.StationName(station), {}};
    for (const auto& [index, start, end] : view.Broadcasts(station, from, to)) {
      row.cells.push_back({start, end, guide.ProgramName(station, index)});
    }
    grid.rows.push_back(std::move(row));
  }
  for (const std::string& line : DrawGrid(grid, screen.Shown())) screen.Print(line);
  screen.Print("");
  const std::int32_t count = guide.StationCount();
  screen.Wrap("Listed: " + view.When(view.Begin()) + " to " + view.When(view.End()) + ", " +
              std::to_string(view.BroadcastCount()) +
              (view.BroadcastCount() == 1 ? " programme on " : " programmes on ") +
              std::to_string(count) + (count == 1 ? " station" : " stations"));
  screen.Wrap("> on now   < began before   . nothing listed");
  return Screen::Finish();
}

void ShowProgram(const Screen& screen, std::string lead, const std::string& text) {
  constexpr int kFewestColumns = 24;
  std::size_t indent = lead.size();
  if (screen.Columns() - static_cast<int>(indent) < kFewestColumns) {
    screen.Print(lead);
    indent = 4;
    lead.assign(indent, ' ');
  }
  std::vector<std::string> lines = WrapColumns(text, screen.Columns() - static_cast<int>(indent));
  if (lines.empty()) lines.emplace_back("(no details)");
  for (const std::string& line : lines) {
    screen.Print(lead + line);
    lead.assign(indent, ' ');
  }
}

ExitStatus ShowDetails(const GuideView& view, const std::vector<std::int32_t>& stations,
                       std::int32_t from, std::int32_t to, const std::string& text) {
  const Screen screen;
  Guide& guide = view.Asked();
  for (const std::int32_t station : stations) {
    std::optional<std::int64_t> day;
    for (const auto& [index, start, end] : view.Broadcasts(station, from, to)) {
      const std::int64_t local = start + view.LocalOffset();
      const std::int64_t minute = (local % kMinutesOfDay + kMinutesOfDay) % kMinutesOfDay;
      if (day != local - minute) {
        if (day) screen.Print("");
        day = local - minute;
        screen.Wrap(guide.StationName(station) + ", " + LongDayText(local));
      }
      const bool on_now = start <= view.Now() && view.Now() < end;
      ShowProgram(screen,
                  std::string(on_now ? "> " : "  ") + HourText(local) + '-' +
                      HourText(end + view.LocalOffset()) + "  ",
                  guide.ProgramData(station, index, text));
    }
    if (!day) {
      screen.Wrap(guide.StationName(station) + ": nothing is listed from " + view.When(from) +
                  " to " + view.When(to));
    }
  }
  return Screen::Finish();
}

}  // namespace

ExitStatus ShowGuideScreen(const GuideView& view, const Options& options) {
  const auto begin = view.FindTime(options.at, 30);
  if (!begin) return kCallFailed;
  const bool details = !options.details.empty();
  const std::int32_t usual = details ? kUsualDetailsHours : kUsualHours;
  const std::int32_t hours = options.hours != 0 ? options.hours : usual;
  const std::int32_t to = GuideView::Clamped(std::int64_t{*begin} + std::int64_t{hours} * 60);
  const std::int32_t from = std::min(*begin, to - 1);
  const auto stations =
      view.FindStations(details ? std::vector{options.details} : options.stations);
  if (!stations) return kCallFailed;
  if (!details) return ShowGrid(view, *stations, from, to);
  const std::string& text =
      options.program_template.empty() ? kUsualTemplate : options.program_template;
  return ShowDetails(view, *stations, from, to, text);
}

}  // namespace shell
