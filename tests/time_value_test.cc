#include "schedule/time_value.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <chrono>
#include <ctime>
#include <random>
#include <string>

#include "platform/services.h"
#include "tests/support/test_support.h"

namespace {

using namespace std::chrono_literals;
using epg_test::FakePlatform;
using ORVANE::MSTR;

// A time value by the standard library's calendar.
std::int32_t Utc(std::chrono::sys_days day, int minutes = 0) {
  const auto days = (day - std::chrono::sys_days(1601y / 1 / 1)).count();
  return static_cast<std::int32_t>(days * 1440 + minutes);
}
const std::int32_t kFeb5 = Utc(2007y / 2 / 5);  // a Monday
const std::int32_t kHalfPast2 = kFeb5 + 870;

// The text of a time in each of the formats, and a bar after it.
std::string Shown(std::int32_t time, std::initializer_list<std::int32_t> formats) {
  std::string shown;
  for (const std::int32_t format : formats) {
    shown += ConvertLocalTime2String(time, format).View();
    shown += '|';
  }
  return shown;
}

// A text "DATE|TIME" hands over the time of day on its own.
void ExpectParsed(int layout, std::int32_t time, std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) {
    const std::size_t bar = text.find('|');
    const MSTR time_text(bar != text.npos ? text.substr(bar + 1) : "");
    EXPECT_EQ(time, ParseTime(TimeLayout{layout}, text.substr(0, bar),
                              bar != text.npos ? &time_text : nullptr))
        << text;
  }
}

TEST(GetNowTime, GoesDownToMultiples) {
  const FakePlatform system;
  platform::overrides.clock = [] { return (kHalfPast2 + 18) * platform::kTicksPerMinute - 1; };
  const int rows[][2] = {{1, 887},  {0, 887},   {-1, 887},           {30, 870},
                         {13, 876}, {-13, 876}, {INT32_MAX, -kFeb5}, {INT32_MIN, -kFeb5}};
  for (const auto& [granularity, minutes] : rows) {
    EXPECT_EQ(kFeb5 + minutes, GetNowTime(granularity)) << granularity;
  }
}

TEST(ConvertLocalTime2String, ShowsAnyTimeInAnyZone) {
  FakePlatform system;
  const auto expect = [&](const char* shown, int minutes_east, std::int32_t time) {
    system.SetZone(minutes_east);
    EXPECT_EQ(shown, Shown(time, {0, 1, 2, 4, 5, 6, -1})) << time;
  };
  expect("Mon, Feb 05, 14:30 (2007)|14:30|Mon:Feb-05:2007|02:30 pm|02:30pm Monday 5-Feb-2007|||", 0,
         kHalfPast2);
  expect("Tue, Feb 06, 00:00 (2007)|00:00|Tue:Feb-06:2007|12:00 am|12:00am Tuesday 6-Feb-2007|||",
         330, kFeb5 + 1110);
  expect("Mon, Jan 24, 12:00 (5684)|12:00|Mon:Jan-24:5684|12:00 pm|12:00pm Monday 24-Jan-5684|||",
         593, INT32_MAX);
  expect("Mon, Jan 01, 11:59 (1601)|11:59|Mon:Jan-01:1601|11:59 am|11:59am Monday 1-Jan-1601|||",
         720, -1);
  for (const auto& [east, time] : {std::pair{0, -1}, {60, -61}, {-1, 0}, {0, INT32_MIN}}) {
    system.SetZone(east);
    EXPECT_EQ("Error: 87|Error: 87|Error: 87|Error: 87|", Shown(time, {0, 3, 6, -1}));
  }
}

TEST(ConvertLocalTime2String, RelatesDaysByLocalMidnights) {
  FakePlatform system;
  for (const int zone : {0, 330, -210, 14 * 60, -12 * 60}) {
    system.SetZone(zone);
    const std::int32_t today = kFeb5 - zone;
    for (const auto& [now, minute] : {std::pair{0, 0}, {0, 1439}, {1439, 0}, {1439, 1439}}) {
      system.SetClock(today + now);
      std::string days;
      for (int day = -8; day <= 7; ++day) days += Shown(today + day * 1440 + minute, {3});
      EXPECT_EQ(
          "Jan-28|Last Monday|Last Tuesday|Last Wednesday|Last Thursday|Last Friday|Last Saturday|"
          "Yesterday|Today|Tuesday|Wednesday|Thursday|Friday|Saturday|Sunday|Feb-12|",
          days);
    }
    EXPECT_EQ("Mar-05|", Shown(today + 28 * 1440, {3}));
  }
}

TEST(ConvertLocalTime2String, TakesTheSystemsZoneAsItIsNow) {
  FakePlatform system;
  const auto expect = [&](const char* shown, const char* zone, int now, int time) {
    ::setenv("TZ", zone, 1);
    system.SetClock(now);
    EXPECT_EQ(shown, Shown(time, {0, 3})) << zone;
  };
  expect("Mon, Feb 05, 23:00 (2007)|Yesterday|", "UTC-3", kFeb5 + 1320, kFeb5 + 1200);
  const char* const summer_time = "CET-1CEST,M3.5.0,M10.5.0/3";
  expect("Mon, Feb 05, 02:00 (2007)|Feb-05|", summer_time, Utc(2007y / 7 / 1), kFeb5);
  expect("Sun, Jul 01, 01:00 (2007)|Jul-01|", summer_time, kFeb5, Utc(2007y / 7 / 1));
  ::unsetenv("TZ");
}

TEST(ParseTime, ReadsNumbersAtTheirPlaces) {
  ExpectParsed(1, kHalfPast2,
               {"2007-02-05T14:30:59", "2007-02-05 14:30 +0100", "2007x 2 +5|14:30"});
  ExpectParsed(1, Utc(2000y / 2 / 29), {"2000-02-29"});
  ExpectParsed(1, kFeb5 + 840, {"2007-02-05T14", "2007-02-05|14:", "2007-02-05 14:+0x"});
  ExpectParsed(1, kFeb5, {"2007-02-05", "2007-02-05T", "2007-02-05T09:15|", "2007-02-05|x"});
  ExpectParsed(1, -1, {"2007-02-05|24:00", "2007-02-05|-1:30", "1900-02-29", "2007-0", "\377", ""});
  ExpectParsed(2, kHalfPast2, {"05/02/2007 14:30", "05/02/2007|14:30", " 5.+2.2007|14:30"});
  ExpectParsed(2, -1, {"5/2/2007", "05/02", "01/01/30827"});
  // 65,536 too much makes another date; 2^32 too much is cut off.
  ExpectParsed(1, -1, {"67543 02 05|14:30", "2007-02-65541|14:30"});
  ExpectParsed(2, kHalfPast2, {"05/02/4294969303|14:30"});
  for (const int unknown : {0, 4}) ExpectParsed(unknown, 0, {"20070205143000"});
}

TEST(ParseTime, ReadsFourteenDigitsAndAZone) {
  ExpectParsed(3, kHalfPast2, {"20070205143059|09:15", "20070205143000 +01:00"});
  ExpectParsed(3, kHalfPast2,
               {"20070205143000+0100", "20070205143000  +0100", "20070205143000 *0100"});
  ExpectParsed(3, kHalfPast2 - 60, {"20070205143000 +0100", "20070205143000xy +0100"});
  ExpectParsed(3, kHalfPast2 + 345, {"20070205143000 -0545", "200702051430 -0545"});
  ExpectParsed(3, INT32_MAX, {"56840124020700", "56840124020800 +0001"});
  ExpectParsed(3, -1,
               {"56840124020800", "56840124020700 -0001", "20070205240000", "20070205143060"});
  ExpectParsed(3, -2, {"16010101000000 +0002"});
  // Digits are codes: ':' comes after '9', '!' is 15 before '0', bytes are unsigned.
  ExpectParsed(3, kHalfPast2, {"20070205142:00", "2007!\31005143000"});
  ExpectParsed(3, kHalfPast2 - 600, {"20070205143000 +0:00"});
  ExpectParsed(3, kHalfPast2 + 2070 * 60, {"20070205143000 -\377000"});
  // What makes no date at fixed places is read by the digits at its start.
  ExpectParsed(3, kHalfPast2, {"2007020514305", "200702051430zz", "2007020514 -0030"});
  ExpectParsed(3, kFeb5, {"20070205", "200702051", "20070205 14:30"});
  ExpectParsed(3, Utc(2007y / 1 / 1), {"2007", "20070", "2007010", "2007-02-05 14:30"});
  ExpectParsed(3, Utc(2006y / 12 / 31, 1380), {"2007 +0100"});
  ExpectParsed(3, -1, {"200713", "200", "", "later than now"});
}

TEST(ParseTime, KnowsEveryDayOfTheCalendar) {
  FakePlatform system;
  system.SetZone(0);
  std::mt19937 random(20070205);
  const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
  for (int i = 0; i < 20'000; ++i) {
    const int day = i % 2 == 0 ? below(33) : 28 + below(4);
    const auto date = std::chrono::year(1601 + below(4083)) / below(14) / day;
    const auto month = static_cast<int>(static_cast<unsigned>(date.month()));
    const auto weekday = static_cast<int>(std::chrono::weekday(date).c_encoding());
    const std::tm t = {0,       5, below(24), day, month - 1, int{date.year()} - 1900,
                       weekday, 0, 0,         0,   nullptr};
    char all[80] = "";
    std::strftime(all, sizeof all,
                  "%Y-%m-%dT%H:%M %d/%m/%Y %H:%M %Y%m%d%H%M%S %a, %b %d, %H:%M (%Y)|", &t);
    const std::string_view text = all;
    const std::int32_t time = date.ok() ? Utc(date, t.tm_hour * 60 + 5) : -1;
    ExpectParsed(1, time, {text.substr(0, 16)});
    ExpectParsed(2, time, {text.substr(17, 16)});
    ExpectParsed(3, time, {text.substr(34, 14)});
    EXPECT_EQ(date.ok() ? text.substr(49) : "Error: 87|", Shown(time, {0}));
  }
}

}  // namespace
