// What only Windows has; and this project's own calendar and code page, which other systems use,
// beside those of Windows.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <fstream>
#include <optional>
#include <random>
#include <tuple>
#include <vector>

#include "host/mstrm.h"
#include "platform/calendar.h"
#include "platform/services.h"
#include "tests/support/test_support.h"
#include "text/windows_1252.h"

namespace {

using platform::FileTime;
using platform::SystemTime;

auto Fields(const SystemTime& t) {
  return std::tuple(t.year, t.month, t.day_of_week, t.day, t.hour, t.minute, t.second,
                    t.milliseconds);
}

void CompareBreakingDown(FileTime time) {
  SystemTime ours = {};
  SystemTime systems = {};
  ::SetLastError(0);
  const bool done = platform::FileTimeToSystemTime(time, systems);
  ASSERT_EQ(platform::FromFileTime(time, ours), done) << time;
  ASSERT_EQ(Fields(ours), Fields(systems)) << time;
  ASSERT_TRUE(done || platform::GetLastError() == platform::kErrorInvalidParameter) << time;
}

bool IsTaken(const SystemTime& t) {
  FileTime time = 0;
  return platform::SystemTimeToFileTime(t, time);
}

// Wine takes 29 February in every year, and years past the last; Windows does not.
bool IsWinesOwn(const SystemTime& t) {
  static const bool any_leap_day = IsTaken({2007, 2, 0, 29, 0, 0, 0, 0});
  static const bool any_year = IsTaken({30'828, 1, 0, 1, 0, 0, 0, 0});
  return (any_leap_day && t.month == 2 && t.day == 29) || (any_year && t.year > 30'827);
}

void CompareMaking(const SystemTime& t) {
  if (IsWinesOwn(t)) return;
  FileTime ours = 0;
  FileTime systems = 0;
  ::SetLastError(0);
  const bool done = platform::SystemTimeToFileTime(t, systems);
  const testing::Message shown = testing::Message()
                                 << t.year << '-' << t.month << '-' << t.day << ' ' << t.hour << ':'
                                 << t.minute << ':' << t.second << '.' << t.milliseconds;
  ASSERT_EQ(platform::ToFileTime(t, ours), done) << shown;
  ASSERT_EQ(ours, systems) << shown;
  ASSERT_TRUE(done || platform::GetLastError() == platform::kErrorInvalidParameter) << shown;
}

TEST(Services, BreakTimesDownAsTheSystemDoes) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 100'000; ++i) {
    CompareBreakingDown(static_cast<FileTime>(random() >> random() % 40));
  }
  constexpr FileTime kLast = INT64_MAX;
  std::vector<FileTime> edges = {0, -1, INT64_MIN, kLast};
  // Around the start of each year, and of a leap day.
  for (int year = 1601; year <= 30827; ++year) {
    for (const auto& [month, day] : {std::pair{1, 1}, {2, 28}, {3, 1}}) {
      FileTime time = 0;
      ASSERT_TRUE(platform::ToFileTime({year, month, 0, day, 0, 0, 0, 0}, time));
      edges.push_back(time);
    }
  }
  for (const FileTime edge : edges) {
    for (const FileTime step : {0, 1, -1, 9'999, 10'000}) {
      if (step < 0 ? edge >= INT64_MIN - step : edge <= kLast - step) {
        CompareBreakingDown(edge + step);
      }
    }
  }
}

TEST(Services, MakeTimesAsTheSystemDoes) {
  std::mt19937 random(2);
  const auto within = [&random](int low, int high) {
    return std::uniform_int_distribution(low, high)(random);
  };
  for (int i = 0; i < 100'000; ++i) {
    // One field in ten is beyond what there is.
    const auto field = [&within](int low, int high) {
      return within(0, 9) == 0 ? within(-2, 70'000) : within(low, high);
    };
    CompareMaking({field(1601, 30'827), field(1, 12), field(0, 6), field(1, 31), field(0, 23),
                   field(0, 59), field(0, 59), field(0, 999)});
  }
  for (const int year : {0, 1600, 1601, 1900, 2000, 2023, 2024, 30'827, 30'828, 65'535, 67'543}) {
    for (int month = 0; month <= 13; ++month) {
      for (int day = 0; day <= 32; ++day) {
        for (const auto& [hour, minute, second, milliseconds] : {std::tuple{0, 0, 0, 0},
                                                                 {23, 59, 59, 999},
                                                                 {24, 0, 0, 0},
                                                                 {0, 60, 0, 0},
                                                                 {0, 0, 60, 0},
                                                                 {0, 0, 0, 1000},
                                                                 {-1, 0, 0, 0}}) {
          CompareMaking({year, month, 9, day, hour, minute, second, milliseconds});
        }
      }
    }
  }
}

TEST(Services, HaveTheSystemsCodePage) {
  if (::GetACP() != 1252) GTEST_SKIP() << "the system's code page is " << ::GetACP();
  for (unsigned unit = 0; unit <= 0xffff; ++unit) {
    bool lacking = false;
    const char byte = platform::WideCharToMultiByte(static_cast<char16_t>(unit), '.', lacking);
    const std::optional<char> ours = ToWindows1252(static_cast<char16_t>(unit));
    ASSERT_EQ(ours.value_or('.'), byte) << unit;
    ASSERT_EQ(!ours, lacking) << unit;
  }
}

TEST(Mstrm, OpensNoFileThatIsBeingWritten) {
  const epg_test::TempFile file("<x/>");
  ORVANE::MSTRM stream;
  {
    const std::ofstream writer(file.Path(), std::ios::app);
    EXPECT_FALSE(stream.Open(file.Name(), true, false, true));
  }
  EXPECT_TRUE(stream.Open(file.Name(), true, false, true));
  EXPECT_FALSE(ORVANE::MSTRM().Open("NUL", true, false, true));
}

}  // namespace
