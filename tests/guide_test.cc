// The console program's guide: what is drawn, what is understood, and what is said when it is not.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/display_text.h"
#include "app/guide_command.h"
#include "app/guide_grid.h"
#include "app/guide_options.h"
#include "app/local_time.h"
#include "tests/support/test_support.h"

namespace {

using shell::ColumnsOf;
using shell::FitColumns;

TEST(DisplayText, IsCutByWhatATerminalShows) {
  const struct {
    const char* text;
    int columns;
    const char* shown;
  } rows[] = {
      {"News", 6, "News  "},
      {"The News", 6, "The N~"},
      {"The News", 5, "The~ "},  // no blank before the mark
      {"L'H\u00f4tel", 6, "L'H\u00f4t~"},
      {"e\u0301te\u0301", 3, "e\u0301te\u0301"},                      // combining accents
      {"\u65e5\u672c\u8a9e", 6, "\u65e5\u672c\u8a9e"},                // two columns each
      {"\u65e5\u672c\u8a9e", 4, "\u65e5~ "},                          // half a character is none
      {"a\x1b[31mb\tc\n", 10, "a [31mb c "},                          // nothing steers the terminal
      {"caf\xe9 \x92\x81", 7, "caf\u00e9 \u2019?"},                   // no UTF-8
      {"\xed\xa0\x80\xc0\xaf", 5, "\u00ed\u00a0\u20ac\u00c0\u00af"},  // nor this
      {"x", 0, ""},
  };
  for (const auto& [text, columns, shown] : rows) {
    EXPECT_EQ(shown, FitColumns(text, columns, "~")) << text;
    EXPECT_EQ(columns, ColumnsOf(FitColumns(text, columns, "~"))) << text;
  }
  const std::vector<std::string> lines = {"one two", "three", "fourfive", "sixseven", "", "end"};
  EXPECT_EQ(lines, shell::WrapColumns("one two three fourfivesixseven\n\nend", 8));
}

TEST(Moments, AreReadAsPeopleWriteThem) {
  const std::int64_t now = epg_test::At("2026-11-23 01:30");  // a Monday
  const auto read = [now](const char* text) -> std::string {
    const auto moment = shell::ReadMoment(text, now);
    if (!moment) return "none";
    return (moment->day ? shell::LongDayText(*moment->day) : "") + "|" +
           (moment->minute ? shell::HourText(*moment->minute) : "");
  };
  const struct {
    const char* text;
    const char* meant;
  } rows[] = {
      {"20:15", "|20:15"},
      {"8pm", "|20:00"},
      {"12:05 am", "|00:05"},
      {"noon", "|12:00"},
      {"now", "Mon 23 Nov 2026|01:30"},
      {"tomorrow 8:15 PM", "Tue 24 Nov 2026|20:15"},
      {"2026-11-25", "Wed 25 Nov 2026|"},
      {"2026-11-25T20:15:00", "Wed 25 Nov 2026|20:15"},
      {"25.11.2026 20:15", "Wed 25 Nov 2026|20:15"},
      {"25/11/2026", "Wed 25 Nov 2026|"},
      {"25.11. 9:05", "Wed 25 Nov 2026|09:05"},
      {"25 November, 20:15", "Wed 25 Nov 2026|20:15"},
      {"Nov 22", "Mon 22 Nov 2027|"},  // the next one
      {"29 feb", "Tue 29 Feb 2028|"},
      {"mon 20:15", "Mon 23 Nov 2026|20:15"},
      {"sunday", "Sun 29 Nov 2026|"},
      {"20:15 tomorrow", "Tue 24 Nov 2026|20:15"},
      {"", "none"},
      {"24:00", "none"},
      {"20:60", "none"},
      {"13pm", "none"},
      {"2026-02-30", "none"},
      {"2026-257-257", "none"},
      {"2026", "none"},
      {"later", "none"},
      {"20:15 21:15", "none"},
      {"-1:00", "none"},
  };
  for (const auto& [text, meant] : rows) EXPECT_EQ(meant, read(text)) << text;
}

TEST(GuideGrid, ShowsGapsDaysAndWhatIsOnNow) {
  const auto at = [](const char* time) { return epg_test::At(time); };
  shell::GuideGrid grid = {
      at("2026-11-23 21:30"), at("2026-11-24 00:30"), at("2026-11-23 22:10"), 60, {}};
  grid.rows = {
      {"One",
       {{at("2026-11-23 21:00"), at("2026-11-23 22:00"), "Before"},
        {at("2026-11-23 22:00"), at("2026-11-23 23:00"), "A long title that is cut"},
        {at("2026-11-23 23:30"), at("2026-11-24 02:00"), "Night"}}},
      {"A station with a long name",
       {{at("2026-11-23 21:45"), at("2026-11-24 00:30"), "Long one"},
        {at("2026-11-23 22:00"), at("2026-11-23 22:30"), "Short"}}},
      {"Empty", {}},
  };
  const std::vector<std::string> expected = {
      "                     Mon 23 Nov                    Tue 24 Nov",
      "                     22:30     23:00     23:30     00:00     00:30     01:00",
      "                                  v now 23:10",
      "One                  <Before   |>A long title that~..........|Night",
      "A station with a lo~ .....|>Lo~|>Short   <>Long one",
      "Empty                ............................................................",
  };
  std::vector<std::string> lines = shell::DrawGrid(grid, {81, false, false, false});
  EXPECT_EQ(expected, lines);
  EXPECT_EQ(lines[5].size(), 81U);
  for (const int columns : {20, 80, 120, 200}) {
    for (const std::string& line : shell::DrawGrid(grid, {columns, false, true, false})) {
      EXPECT_LE(ColumnsOf(line), columns) << line;
    }
  }
  const std::string joined = shell::DrawGrid(grid, {81, true, true, false})[3];
  EXPECT_NE(joined.find("\033[7m|>A long title"), std::string::npos) << joined;
}

TEST(GuideOptions, AreCheckedBeforeAnythingIsLoaded) {
  const struct {
    std::vector<std::string> arguments;
    const char* error;
  } rows[] = {
      {{}, "guide needs a listings file"},
      {{"a", "b"}, "guide takes one listings file, not also b"},
      {{"a", "--foo"}, "guide has no option --foo"},
      {{"a", "--at"}, "--at needs a value"},
      {{"a", "--hours=x"}, "--hours takes a number from 1 to 336, not x"},
      {{"a", "--hours", "337"}, "--hours takes a number from 1 to 336, not 337"},
      {{"a", "--template", "$Title"}, "--template goes with --details"},
      {{"--hours", "5", "a", "--stations=1,two", "--details=x", "--template", "t"}, ""},
  };
  for (const auto& [arguments, expected] : rows) {
    std::string error;
    EXPECT_EQ(expected[0] == '\0', shell::ReadGuideOptions(arguments, error).has_value());
    EXPECT_EQ(expected, error);
  }
}

}  // namespace
