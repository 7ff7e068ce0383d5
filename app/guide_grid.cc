#include "app/guide_grid.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "app/display_text.h"
#include "app/local_time.h"

namespace shell {

namespace {

constexpr const char* kBold = "\033[1m";
constexpr const char* kDim = "\033[2m";
constexpr const char* kReverse = "\033[7m";
constexpr const char* kPlain = "\033[0m";

class Drawing {
 public:
  Drawing(const GuideGrid& grid, const Terminal& terminal) : grid_(grid), terminal_(terminal) {
    // Names get what they need, but leave the greater part to the programmes.
    int longest = 7;
    for (const GuideRow& row : grid.rows) longest = std::max(longest, ColumnsOf(row.station));
    label_columns_ = std::min(longest, std::max(7, std::min(24, terminal.columns / 4)));
    grid_columns_ = terminal.columns - label_columns_ - 1;
  }

  std::vector<std::string> Lines() {
    Scale();
    for (const GuideRow& row : grid_.rows) {
      std::string line =
          Styled(kBold, FitColumns(row.station, label_columns_, Ellipsis())) + ' ' + Cells(row);
      line.erase(line.find_last_not_of(' ') + 1);
      lines_.push_back(std::move(line));
    }
    return std::move(lines_);
  }

 private:
  std::string_view Ellipsis() const { return terminal_.utf8 ? "\u2026" : "~"; }

  std::string Styled(const char* style, const std::string& text) const {
    return terminal_.colours ? style + text + kPlain : text;
  }

  int ColumnOf(std::int64_t time) const {
    const std::int64_t span = std::int64_t{grid_.to} - grid_.from;
    const std::int64_t column = (time - grid_.from) * grid_columns_ / span;
    return static_cast<int>(std::clamp<std::int64_t>(column, 0, grid_columns_));
  }

  // Writes a label over a line, unless it does not fit between what stands there and the end.
  void Put(std::string& line, int column, const std::string& label) const {
    const auto at = static_cast<std::size_t>(column);
    const std::size_t size = label.size();
    if (at + size > line.size()) return;
    const std::size_t before = at == 0 ? 0 : at - 1;
    if (line.find_first_not_of(' ', before) < at + size) return;
    line.replace(at, size, label);
  }

  void AddScaleLine(const std::string& line, const char* style) {
    std::string whole = std::string(static_cast<std::size_t>(label_columns_) + 1, ' ') + line;
    whole.erase(whole.find_last_not_of(' ') + 1);
    if (!whole.empty()) lines_.push_back(Styled(style, whole));
  }

  void Scale() {
    const std::string blank(static_cast<std::size_t>(grid_columns_), ' ');
    const std::int64_t begin = grid_.from + grid_.local_offset;
    const std::int64_t end = grid_.to + grid_.local_offset;
    std::string days = blank;
    Put(days, 0, DayText(begin));
    for (std::int64_t day = begin - begin % kMinutesOfDay + kMinutesOfDay; day < end;
         day += kMinutesOfDay) {
      Put(days, ColumnOf(day - grid_.local_offset), DayText(day));
    }
    AddScaleLine(days, kBold);

    // The narrowest step whose labels keep apart.
    constexpr int kSteps[] = {15, 30, 60, 120, 180, 360, 720, 1440};
    constexpr int kLabelColumns = 10;
    const auto* const step =
        std::find_if(std::begin(kSteps), std::end(kSteps) - 1, [&](int minutes) {
          return std::int64_t{minutes} * grid_columns_ >= kLabelColumns * (end - begin);
        });
    std::string hours = blank;
    for (std::int64_t time = (begin + *step - 1) / *step * *step; time < end; time += *step) {
      Put(hours, ColumnOf(time - grid_.local_offset), HourText(time));
    }
    AddScaleLine(hours, kReverse);

    if (grid_.now < grid_.from || grid_.now >= grid_.to) return;
    std::string mark = blank;
    const int column = std::min(ColumnOf(grid_.now), grid_columns_ - 1);
    mark[static_cast<std::size_t>(column)] = 'v';
    Put(mark, column + 2, "now " + HourText(grid_.now + grid_.local_offset));
    AddScaleLine(mark, kBold);
  }

  std::string Cells(const GuideRow& row) const {
    constexpr std::size_t kNothing = ~std::size_t{0};
    std::vector<std::size_t> shown(static_cast<std::size_t>(grid_columns_), kNothing);
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      const auto begin = static_cast<std::size_t>(ColumnOf(row.cells[i].start));
      const auto end = static_cast<std::size_t>(ColumnOf(row.cells[i].end));
      for (std::size_t column = begin; column < end; ++column) shown[column] = i;
    }
    std::string line;
    for (std::size_t begin = 0; begin < shown.size();) {
      std::size_t end = begin + 1;
      while (end < shown.size() && shown[end] == shown[begin]) ++end;
      const auto columns = static_cast<int>(end - begin);
      if (shown[begin] == kNothing) {
        line += Styled(kDim, std::string(end - begin, '.'));
      } else {
        const GuideCell& cell = row.cells[shown[begin]];
        const bool starts =
            cell.start >= grid_.from && ColumnOf(cell.start) == static_cast<int>(begin);
        line += Cell(cell, columns, starts);
      }
      begin = end;
    }
    return line;
  }

  std::string Cell(const GuideCell& cell, int columns, bool starts) const {
    const bool on_now = cell.start <= grid_.now && grid_.now < cell.end;
    std::string text(1, starts ? '|' : '<');
    if (on_now && columns > 1) text += '>';
    text += FitColumns(cell.title, columns - static_cast<int>(text.size()), Ellipsis());
    return on_now ? Styled(kReverse, text) : text;
  }

  const GuideGrid& grid_;
  const Terminal& terminal_;
  int label_columns_ = 0;
  int grid_columns_ = 0;
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> DrawGrid(const GuideGrid& grid, const Terminal& terminal) {
  return Drawing(grid, terminal).Lines();
}

}  // namespace shell
