// A programme guide drawn as a grid of text: stations as rows, time as columns.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/terminal.h"

namespace shell {

// Units: the plug-in's times, minutes in UTC.
struct GuideCell {
  std::int32_t start;
  std::int32_t end;
  std::string title;
};

struct GuideRow {
  std::string station;
  std::vector<GuideCell> cells;  // in order of start; where they overlap, the later one is shown
};

struct GuideGrid {
  std::int32_t from;
  std::int32_t to;
  std::int32_t now;
  std::int64_t local_offset;  // what to add to a time to have it in local time
  std::vector<GuideRow> rows;
};

// The grid's lines: days, hours, a mark at the present time, and a row for each station. A cell
// begins with '|', or with '<' when its programme began before the grid does; '>' marks what is on
// now; dots fill the time for which nothing is listed.
std::vector<std::string> DrawGrid(const GuideGrid& grid, const Terminal& terminal);

}  // namespace shell
