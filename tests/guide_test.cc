// The console program's guide: what is drawn, what is understood, and what is said when it is not.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/display_text.h"
#include "app/guide_grid.h"
#include "app/local_time.h"
#include "app/text_search.h"
#include "tests/support/test_support.h"
#include "text/near_miss.h"

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
      {"a\x7f\u009b\u2028z", 5, "a   z"},                             // DEL, C1, a separator
      {"x", 0, ""},
      // Titles as they are, with emoji, joiners and selectors.
      {"\u231a Watchmen \u26bd", 14, "\u231a Watchmen \u26bd"},
      {"\u2614\u26a1\u2b50", 6, "\u2614\u26a1\u2b50"},
      {"I \u2764\ufe0f Lucy", 9, "I \u2764\ufe0f Lucy"},
      {"\U0001f3ac Film", 7, "\U0001f3ac Film"},
      {"\U0001f468\u200d\U0001f469\u200d\U0001f467 TV", 9,
       "\U0001f468\u200d\U0001f469\u200d\U0001f467 TV"},
      {"\U0001f1ee\U0001f1f9 Serie A", 10, "\U0001f1ee\U0001f1f9 Serie A"},
      {"\uac00\uc694\ubb34\ub300", 8, "\uac00\uc694\ubb34\ub300"},
      {"\u0e01\u0e35\u0e2c\u0e32", 3, "\u0e01\u0e35\u0e2c\u0e32"},
      {"\u0939\u093f\u0928\u094d\u0926\u0940", 5, "\u0939\u093f\u0928\u094d\u0926\u0940"},
      {"\u041d\u043e\u0432\u043e\u0441\u0442\u0438", 7,
       "\u041d\u043e\u0432\u043e\u0441\u0442\u0438"},
      {"\u05d7\u05d3\u05b7\u05e9\u05c1", 3, "\u05d7\u05d3\u05b7\u05e9\u05c1"},
      {"1\ufe0f\u20e3 One", 6, "1\ufe0f\u20e3 One"},
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
      {"23 Nov", "Mon 23 Nov 2026|"},  // today's own
      {"midnight", "|00:00"},
      {"yesterday 23:59", "Sun 22 Nov 2026|23:59"},
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

TEST(GuideGrid, DrawsTwoDaysInFewColumns) {
  const auto at = [](const char* time) { return epg_test::At(time); };
  shell::GuideGrid grid = {
      at("2026-11-23 12:00"), at("2026-11-25 12:00"), at("2026-11-24 06:00"), 0, {}};
  grid.rows = {
      // What ends now is over; a cell of one column has no room for its title.
      {"One",
       {{at("2026-11-23 12:00"), at("2026-11-24 06:00"), "Ended"},
        {at("2026-11-24 06:00"), at("2026-11-24 08:00"), "Narrow"},
        {at("2026-11-24 08:00"), at("2026-11-24 20:00"), "Fits\x7f"}}},
      // A long programme under two others shows before, between and after them.
      {"Two",
       {{at("2026-11-23 10:00"), at("2026-11-25 10:00"), "Long"},
        {at("2026-11-23 20:00"), at("2026-11-24 00:00"), "a"},
        {at("2026-11-24 12:00"), at("2026-11-24 20:00"), "b"}}},
  };
  const std::vector<std::string> expected = {
      "        Mon 23 Nov",
      "              00:00       00:00",
      "                 v now 06:00",
      "One     |Ended   ||Fits ........",
      "Two     <>L~|a<>Long|b  <>Long .",
  };
  EXPECT_EQ(expected, shell::DrawGrid(grid, {32, false, false, false}));
}

TEST(TextSearch, LeavesCaseAndAccentsAside) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      // words, a text, and what of it is found
      {"ete", "L'\u00c9t\u00e9 et l'ete\u0301", "\u00c9t\u00e9|ete\u0301"},
      {"stra\u00dfe", "STRASSE", "STRASSE"},
      {"ss", "Stra\u00dfe", "\u00df"},
      {"lodz", "\u0141\u00f3d\u017a", "\u0141\u00f3d\u017a"},
      {"MOCKBA", "\u043c\u043e\u0441\u043a\u0432\u0430", ""},
      {"\u041c\u041e\u0421", "\u043c\u043e\u0441\u043a", "\u043c\u043e\u0441"},
      {"caf\xe9", "Caf\u00e9", "Caf\u00e9"},  // Windows-1252
      {"a ana", "banana a", "ana|a|a"},
      {"night river", "the river", ""},
  };
  for (const auto& [words, text, found] : rows) {
    const shell::TextSearch search({words});
    std::string places;
    if (search.Missing(text, search.All()) == 0) {
      for (const auto& [begin, end] : search.Places(text))
        places += (places.empty() ? "" : "|") + std::string(text).substr(begin, end - begin);
    }
    EXPECT_EQ(found, places) << words << " in " << text;
  }
}

TEST(NearMiss, KnowsWhatWasMeant) {
  const std::vector<std::string> known = {"Thimble", "Velvet Reel", "Orrery", "Two"};
  const std::pair<const char*, const char*> rows[] = {
      {"thimbel", "Thimble"}, {"Velvetreel", "Velvet Reel"}, {"Ored", ""}, {"Tow", ""}, {"", ""}};
  for (const auto& [name, meant] : rows) EXPECT_EQ(meant, NearMiss(name, known)) << name;
}

}  // namespace
