#include "app/stations_screen.h"

#include <algorithm>
#include <string>
#include <vector>

#include "app/display_text.h"
#include "app/screen.h"

namespace shell {

ExitStatus ShowStationsScreen(const GuideView& view, const Options& options) {
  const auto stations = view.FindStations(options.stations);
  if (!stations) return kCallFailed;
  const Screen screen;
  Guide& guide = view.Asked();
  const auto widest = [&](auto text, const char* heading) {
    int columns = ColumnsOf(heading);
    for (const std::int32_t station : *stations)
      columns = std::max(columns, ColumnsOf((guide.*text)(station)));
    return std::min(columns, 32);
  };
  const int names = widest(&Guide::StationName, "Name");
  const int ids = widest(&Guide::StationId, "Id");
  const auto print = [&](const std::string& index, const std::string& name, const std::string& id,
                         const std::string& count, const std::string& range) {
    std::string line = std::string(std::max<std::size_t>(5, index.size()) - index.size(), ' ') +
                       index + "  " + FitColumns(name, names, screen.Ellipsis()) + "  " +
                       FitColumns(id, ids, screen.Ellipsis()) + "  " +
                       std::string(std::max<std::size_t>(10, count.size()) - count.size(), ' ') +
                       count + "  " + range;
    line.erase(line.find_last_not_of(' ') + 1);
    screen.Print(line);
  };
  print("Index", "Name", "Id", "Programmes", "Listed");
  for (const std::int32_t station : *stations) {
    const std::int32_t count = guide.ProgramCount(station);
    std::string range;
    if (count > 0) {
      const auto all = view.Broadcasts(station);
      std::int32_t end = all.front().end;
      for (const auto& broadcast : all) end = std::max(end, broadcast.end);
      range = view.When(all.front().start) + " to " + view.When(end);
    }
    print(std::to_string(station), guide.StationName(station), guide.StationId(station),
          std::to_string(count), range);
  }
  return Screen::Finish();
}

}  // namespace shell
