// What only a POSIX system has.

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <utility>

#include "host/mstrm.h"
#include "schedule/time_value.h"
#include "tests/support/test_support.h"

namespace {

TEST(Mstrm, OpensNoPipe) {
  const epg_test::TempFile file("");
  const std::string pipe = file.Path() + ".pipe";
  ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
  ORVANE::MSTRM stream;
  EXPECT_FALSE(stream.Open(pipe.c_str(), true, false, true));
}

// Wine takes 29 February in every year; Windows does not.
TEST(ParseTime, KnowsLeapYears) {
  using enum TimeLayout;
  EXPECT_EQ(-1, ParseTime(kYearFirst, "1900-02-29"));
  EXPECT_EQ(-1, ParseTime(kYearFirst, "2007-02-29"));
  EXPECT_EQ(-1, ParseTime(kYearFirst, "2100-02-29"));
  EXPECT_EQ(epg_test::At("2000-03-01") - 1440, ParseTime(kYearFirst, "2000-02-29"));
}

TEST(ConvertLocalTime2String, TakesTheSystemsZoneAsItIsNow) {
  epg_test::FakePlatform system;
  const std::int32_t time = epg_test::At("2007-02-05 00:00");
  std::int32_t now = epg_test::At("2007-07-01 22:10");  // past midnight in summer time
  for (const auto& [zone, shown] :
       {std::pair{"CET-1CEST,M3.5.0,M10.5.0/3", "Mon, Feb 05, 02:00 (2007) Feb-05"},
        {"EST5", "Sun, Feb 04, 19:00 (2007) Feb-04"}}) {
    ::setenv("TZ", zone, 1);
    system.SetClock(++now);
    EXPECT_EQ(shown, ConvertLocalTime2String(time, 0) + ' ' + ConvertLocalTime2String(time, 3));
  }
  ::unsetenv("TZ");
}

}  // namespace
