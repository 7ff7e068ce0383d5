// The console program's guide: texts in columns, searches, moments, and grids.

#include <string>

#include "app/display_text.h"
#include "app/guide_grid.h"
#include "app/local_time.h"
#include "app/text_search.h"
#include "fuzz/fuzz_support.h"
#include "text/windows_1252_utf8.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const int columns = 20 + data[0] % 100;
  const std::int32_t begin = 220'000'000 + data[1];
  const std::int32_t length = 1 + data[2] * data[3];
  const std::string_view text = fuzz::View(data, size).substr(4);

  fuzz::Check(shell::ColumnsOf(shell::FitColumns(text, columns, "~")) == columns,
              "a fitted text is as wide as asked");
  for (const std::string& line : shell::WrapColumns(text, columns)) {
    fuzz::Check(shell::ColumnsOf(line) <= columns, "a wrapped line fits");
    fuzz::Check(line.find_first_of("\x1b\n\r\t") == std::string::npos, "no line steers a terminal");
  }
  const std::string utf8 = AsUtf8(text);
  for (std::string_view rest = utf8; !rest.empty();) {
    const std::size_t bytes = DecodeUtf8(rest).bytes;
    fuzz::Check(bytes != 0, "what is handed on is UTF-8");
    rest.remove_prefix(bytes);
  }
  const shell::TextSearch search({std::string(text)});
  fuzz::Check(search.Missing(text, search.All()) == 0, "a text contains its own words");
  std::size_t behind = 0;
  for (const auto& [first, last] : search.Places(text)) {
    fuzz::Check(first >= behind && first < last && last <= text.size(), "places are in order");
    behind = last;
  }
  if (const auto moment = shell::ReadMoment(text, begin)) {
    fuzz::Check(moment->day || moment->minute, "a moment says something");
    fuzz::Check(!moment->minute || (*moment->minute >= 0 && *moment->minute < 1440),
                "a time of day is within the day");
    fuzz::Check(!moment->day || (*moment->day >= 0 && *moment->day % 1440 == 0), "a day is whole");
  }

  // Each byte begins a programme so much later.
  shell::GuideGrid grid = {begin, begin + length, begin + length / 2, data[0], {}};
  shell::GuideRow row = {std::string(text), {}};
  std::int32_t start = begin - 100;
  for (const char c : text) {
    const int step = static_cast<unsigned char>(c);
    row.cells.push_back({start, start + step, std::string(text)});
    start += step + 1;
    if (row.cells.size() == 32) break;
  }
  grid.rows.push_back(row);
  for (const std::string& line : shell::DrawGrid(grid, {columns, false, true, false})) {
    fuzz::Check(shell::ColumnsOf(line) <= columns, "a line of the grid fits");
  }
  return 0;
}
