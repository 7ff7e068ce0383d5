#include "schedule/time_value.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <random>
#include <string>
#include <tuple>

#include "tests/support/test_support.h"

namespace {

using epg_test::At;
using epg_test::FakePlatform;

constexpr std::int32_t kFeb5 = 213'585'120;  // 2007, a Monday
constexpr std::int32_t kHalfPast2 = kFeb5 + 870;

// The text of a time in each of the formats, and a bar after it.
std::string Shown(std::int32_t time, std::initializer_list<std::int32_t> formats) {
  std::string shown;
  for (const int format : formats) (shown += ConvertLocalTime2String(time, format)) += '|';
  return shown;
}

// A text "DATE|TIME" hands over the time of day on its own.
void ExpectParsed(int layout, std::int32_t time, std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) {
    const std::size_t bar = text.find('|');
    const std::string date(text.substr(0, bar));
    EXPECT_EQ(time,
              ParseTime(TimeLayout{layout}, date,
                        bar != text.npos ? std::optional(text.substr(bar + 1)) : std::nullopt))
        << text;
  }
}

TEST(ConvertLocalTime2String, ShowsAnyTimeInAnyZone) {
  FakePlatform system;
  const std::tuple<int, std::int32_t, const char*> rows[] = {
      {330, kFeb5 + 1110,
       "Tue, Feb 06, 00:00 (2007)|00:00|Tue:Feb-06:2007|12:00 am|12:00am Tuesday 6-Feb-2007|||"},
      {593, INT32_MAX,
       "Mon, Jan 24, 12:00 (5684)|12:00|Mon:Jan-24:5684|12:00 pm|12:00pm Monday 24-Jan-5684|||"},
      {720, -1,
       "Mon, Jan 01, 11:59 (1601)|11:59|Mon:Jan-01:1601|11:59 am|11:59am Monday 1-Jan-1601|||"},
      {60, -61, "Error: 87|Error: 87|Error: 87|Error: 87|Error: 87|Error: 87|Error: 87|"}};
  for (const auto& [minutes_east, time, shown] : rows) {
    system.SetZone(minutes_east);
    EXPECT_EQ(shown, Shown(time, {0, 1, 2, 4, 5, 6, -1}));
  }
}

TEST(ConvertLocalTime2String, RelatesDaysByLocalMidnights) {
  FakePlatform system;
  for (const auto& [zone, now, minute] :
       {std::tuple{0, 0, 0}, {330, 0, 1439}, {-210, 1439, 0}, {-720, 1439, 1439}}) {
    system.SetZone(zone);
    system.SetClock(kFeb5 - zone + now);
    std::string days;
    for (int day = -8; day <= 7; ++day) days += Shown(kFeb5 - zone + day * 1440 + minute, {3});
    EXPECT_EQ(
        "Jan-28|Last Monday|Last Tuesday|Last Wednesday|Last Thursday|Last Friday|Last Saturday|"
        "Yesterday|Today|Tuesday|Wednesday|Thursday|Friday|Saturday|Sunday|Feb-12|",
        days);
  }
}

TEST(ParseTime, ReadsNumbersAtTheirPlaces) {
  ExpectParsed(1, kHalfPast2, {"2007-02-05T14:30:59", "2007-02-05 14:30 +01", "2007x 2 +5|14:30"});
  ExpectParsed(1, kFeb5 + 840, {"2007-02-05T14", "2007-02-05|14:", "2007-02-05 14:+0x"});
  ExpectParsed(1, kFeb5, {"2007-02-05", "2007-02-05T", "2007-02-05T09:15|", "2007-02-05|x"});
  ExpectParsed(1, -1, {"2007-02-05|24:00", "2007-02-05|-1:30", "\377", ""});
  // 65,536 too much makes another date; 2^32 too much is cut off.
  ExpectParsed(1, -1, {"67543 02 05|14:30", "2007-02-65541|14:30"});
  ExpectParsed(2, kHalfPast2, {"05/02/2007 14:30", " 5.+2.2007|14:30", "05/02/4294969303|14:30"});
}

TEST(ParseTime, ReadsFourteenDigitsAndAZone) {
  ExpectParsed(3, kHalfPast2, {"20070205143059|9", "20070205143000 +01:00", "200702051430 *0100"});
  ExpectParsed(3, kHalfPast2 - 60, {"20070205143000 +0100", "20070205143000xy +0100"});
  ExpectParsed(3, kHalfPast2 + 345, {"20070205143000 -0545", "200702051430 -0545"});
  ExpectParsed(3, INT32_MAX, {"56840124020700", "56840124020800 +0001"});
  ExpectParsed(3, -1, {"56840124020800", "20070205240000", "20070205143060"});
  // Digits are codes: ':' comes after '9', '!' is 15 before '0', bytes are unsigned.
  ExpectParsed(3, kHalfPast2, {"20070205142:00", "2007!\31005143000"});
  ExpectParsed(3, kHalfPast2 + 2070 * 60, {"20070205143000 -\377000"});
  // What makes no date at fixed places is read by the digits at its start.
  ExpectParsed(3, kHalfPast2, {"2007020514305", "200702051430zz", "2007020514 -0030"});
  ExpectParsed(3, kFeb5, {"20070205", "200702051", "20070205 14:30"});
  ExpectParsed(3, At("2007-01-01 00:00"), {"2007", "20070", "2007010", "2007-02-05 14:30"});
  ExpectParsed(3, -1, {"200713", "200", "", "later than now"});
}

TEST(ParseTime, KnowsEveryDayOfTheCalendar) {
  using namespace std::chrono;
  static constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  FakePlatform system;
  system.SetZone(0);
  std::mt19937 random(20070205);
  for (int i = 0; i < 20'000; ++i) {
    const auto time = static_cast<std::int32_t>(random() >> 1);
    const sys_days day = sys_days(year(1601) / January / 1) + days(time / 1440);
    const year_month_day date(day);
    char text[80] = "";
    std::snprintf(text, sizeof text, "%04d%02u%02u%02d%02d00%s, %s %02u, %02d:%02d (%d)|",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), time / 60 % 24, time % 60,
                  kWeekdays[weekday(day).c_encoding()],
                  kMonths[static_cast<unsigned>(date.month()) - 1],
                  static_cast<unsigned>(date.day()), time / 60 % 24, time % 60,
                  static_cast<int>(date.year()));
    ExpectParsed(3, time, {std::string_view(text, 14)});
    EXPECT_EQ(text + 14, Shown(time, {0}));
  }
  ExpectParsed(2, -1, {"30/02/2008", "31/04/2007", "00/01/2007", "01/13/2007"});
}

}  // namespace
