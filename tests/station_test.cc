#include "schedule/station.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "schedule/provider_data.h"
#include "tests/support/test_support.h"

namespace {

using ORVANE::MSTR;
using Time = std::int32_t;
using Start = std::optional<Time>;

Time At(const std::string& time) { return epg_test::At("2007-02-05 " + time); }

// True when the station has taken the item.
bool Insert(CStation& station, Time start, Time end) {
  auto item = std::make_unique<CScheduleItem>();
  std::tie(item->start, item->end) = std::pair(start, end);
  const bool taken = station.Insert(item);
  EXPECT_EQ(taken, item == nullptr);
  return taken;
}

Start StartOf(const CScheduleItem* item) { return item != nullptr ? Start(item->start) : Start(); }

// The time index kept and asked the plain way, step by step. Buckets are numbered from that of the
// first item ever inserted.
struct PlainIndex {
  bool Insert(Time start, Time item_end) {
    if (items.empty()) std::tie(base, end) = std::pair(start, item_end);
    if (!items.try_emplace(start, item_end).second) return false;
    for (; start < base; base -= 180) --lowest;
    const std::int64_t bucket = lowest + (start - base) / 180;
    highest = std::max(highest, bucket);
    Time& earliest = buckets.try_emplace(bucket, start).first->second;
    earliest = std::min(earliest, start);
    end = std::max(end, item_end);
    return true;
  }

  Start Find(Time from, Time to) const {
    if (items.empty() || to <= items.begin()->first || from >= end) return {};
    const std::int64_t bucket = std::clamp(lowest + (from - base) / 180, lowest, highest);
    auto item = items.find(std::prev(buckets.upper_bound(bucket))->second);
    if (item != items.begin() && std::prev(item)->second > from) return std::prev(item)->first;
    return FirstFrom(item, from, to);
  }

  Start FirstFrom(std::map<Time, Time>::const_iterator item, Time from, Time to) const {
    while (item != items.end() && item->second <= from) ++item;
    return item != items.end() && item->first < to ? Start(item->first) : Start();
  }

  std::map<Time, Time> items;            // end by start
  std::map<std::int64_t, Time> buckets;  // earliest start by bucket
  std::int64_t lowest = 0;
  std::int64_t highest = 0;
  std::int64_t base = 0;
  Time end = 0;
};

void ExpectSame(const PlainIndex& plain, const CStation& station) {
  std::map<Time, Time> items;
  const CScheduleItem* previous = nullptr;
  for (const CScheduleItem* item = station.FirstItem(); item != nullptr; item = item->next) {
    ASSERT_EQ(previous, item->previous);
    ASSERT_TRUE(previous == nullptr || previous->start < item->start);
    items[item->start] = item->end;
    previous = item;
  }
  std::map<std::int64_t, Time> buckets;
  std::int64_t bucket = plain.lowest;
  for (const CScheduleItem* const earliest : station.Buckets()) {
    if (earliest != nullptr) buckets[bucket] = earliest->start;
    ++bucket;
  }
  ASSERT_EQ(plain.items.size(), static_cast<std::size_t>(station.CountItems()));
  ASSERT_EQ(std::tuple(plain.items, plain.buckets, plain.highest + 1, plain.base, plain.end),
            std::tuple(items, buckets, bucket, station.IndexBase(), station.ScheduleEnd()));
}

TEST(TimeIndex, IsThePlainOneAfterEveryInsertion) {
  std::mt19937_64 random(16010101);
  const auto between = [&random](std::int64_t low, std::int64_t high) {
    return static_cast<Time>(std::uniform_int_distribution(low, std::max(low, high))(random));
  };
  const Time spans[][4] = {{0, 600, 90, 900},
                           {-3000, 86'400, 150, 900},
                           {213'000'000, 220'000'000, 60, 300},
                           {0, INT32_MAX, 4, 3}};
  for (const auto& [low, high, count, queries] : spans) {
    for (int series = 0; series < 6; ++series) {
      const bool overlapping = series % 2 == 0;
      std::vector<std::pair<Time, Time>> items(static_cast<std::size_t>(count));
      for (auto& item : items) item.first = between(low, high);
      std::sort(items.begin(), items.end());
      Time next = high;
      for (auto item = items.rbegin(); item != items.rend(); next = item++->first) {
        item->second =
            between(item->first + (overlapping ? -30 : 1), overlapping ? item->first + 600 : next);
      }
      if (series % 3 == 1) std::reverse(items.begin(), items.end());
      if (series % 3 == 2) std::shuffle(items.begin(), items.end(), random);

      CStation station;
      PlainIndex plain;
      for (const auto& [start, end] : items) {
        ASSERT_EQ(plain.Insert(start, end), Insert(station, start, end));
        ASSERT_NO_FATAL_FAILURE(ExpectSame(plain, station)) << series;
      }
      for (int i = 0; i < queries; ++i) {
        const Time from = between(plain.base - 400, plain.end + 400LL);
        const Time to = i % 9 == 0 ? plain.items.begin()->first : between(from - 100, from + 800LL);
        const Start found = StartOf(station.FindFirstProgram(from, to));
        ASSERT_EQ(plain.Find(from, to), found) << from << ' ' << to;
        if (overlapping || to <= from) continue;
        ASSERT_EQ(plain.FirstFrom(plain.items.begin(), from, to), found) << from << ' ' << to;
      }
      station.BuildProgramIndex();
      ASSERT_EQ(station.CountItems(), station.GetProgramCount());
      ASSERT_EQ(nullptr, station.GetProgram(-1));
      ASSERT_EQ(nullptr, station.GetProgram(station.CountItems()));
      ASSERT_EQ(station.CountItems(), station.IndexOf(CScheduleItem()));
      for (std::int32_t i = 0; i < station.CountItems(); ++i) {
        ASSERT_EQ(std::next(plain.items.begin(), i)->first, station.GetProgram(i)->start);
        ASSERT_EQ(i, station.IndexOf(*station.GetProgram(i)));
      }
    }
  }
}

TEST(TimeIndex, TakesAMillionItemsInReverse) {
  CStation station;
  for (Time start = 60'000'000; start > 0; start -= 60) Insert(station, start, start + 60);
  station.BuildProgramIndex();
  for (Time i = 0; i < station.GetProgramCount(); i += 9'973) {
    EXPECT_EQ(station.GetProgram(i), station.FindFirstProgram(i * 60 + 119, i * 60 + 120));
  }
  EXPECT_EQ(1'000'000, station.GetProgramCount());
  EXPECT_EQ(333'334, station.Buckets().Count());
}

// The most memory that has been in use so far, in KB.
long PeakMemory() {
  rusage usage = {};
  return ::getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : 0;
}

TEST(TimeIndex, SpansMillenniaWithoutTheirMemory) {
  std::vector dates = {At("20:15"), Time{0}, Time{INT32_MAX - 60}};
  std::vector<std::unique_ptr<CStation>> stations;
  const long before = PeakMemory();
  while (stations.size() < 100) {
    CStation& station = *stations.emplace_back(std::make_unique<CStation>());
    if (stations.size() <= 12) std::next_permutation(dates.begin(), dates.end());
    for (const Time date : dates) Insert(station, date, date + 60);
    Insert(station, At("12:00"), At("13:00"));
    EXPECT_EQ(At("12:00"), StartOf(station.FindFirstProgram(At("12:30"), At("13:00"))));
    ASSERT_LT(PeakMemory() - before, 1'000'000);
  }
}

TEST(FindFirstProgram, AnswersAroundAGap) {
  CStation station;
  EXPECT_EQ(nullptr, station.FindFirstProgram(INT32_MIN, INT32_MAX));
  Insert(station, At("10:00"), At("11:30"));
  Insert(station, At("08:00"), At("10:00"));
  Insert(station, At("16:00"), At("17:00"));
  std::vector<Start> buckets;  // of three hours, from 07:00
  for (const CScheduleItem* const item : station.Buckets()) buckets.push_back(StartOf(item));
  EXPECT_EQ((std::vector<Start>{At("08:00"), At("10:00"), {}, At("16:00")}), buckets);
  std::istringstream rows(
      "08:00 08:30 08:00  09:59 10:30 08:00  10:00 10:30 10:00  11:29 11:30 10:00  "
      "11:30 16:00 none   11:30 16:01 16:00  16:59 17:00 16:00  17:00 18:00 none   "
      "07:00 08:00 none   07:00 08:01 08:00  12:00 08:01 none   13:01 16:01 16:00");
  for (std::string from, to, start; rows >> from >> to >> start;) {
    const CScheduleItem* const found = station.FindFirstProgram(At(from), At(to));
    EXPECT_EQ(start == "none" ? Start() : At(start), StartOf(found)) << from << " to " << to;
  }
}

TEST(Station, IsLabelledByNetworkAndCallSign) {
  CStation station;
  station.call_sign = "City One";
  EXPECT_EQ("City One", station.GetLabel().View());
  station.network = "Metro";
  EXPECT_EQ("Metro/City One", station.GetLabel().View());
  station.call_sign = "";
  EXPECT_EQ("Metro/", station.GetLabel().View());
}

TEST(PointerArray, GrowsSixteenFurther) {
  CPointerArray<const int> array;
  const int entry = 0;
  const std::int32_t rows[][2] = {{17, 17}, {18, 34}, {35, 51}, {5, 51}, {60, 76}, {0, 0}};
  for (const auto& [size, capacity] : rows) {
    while (array.Count() < std::min(size, 35)) array.Append(&entry);
    array.SetSize(size);
    EXPECT_EQ(capacity, array.Capacity()) << size;
  }
  array.Append(&entry);
  EXPECT_THROW(array.SetSize(INT32_MAX), std::bad_alloc);
  EXPECT_EQ(17, array.Capacity());
  EXPECT_EQ((std::vector{&entry}), std::vector(array.begin(), array.end()));
}

TEST(ProviderData, KeepsOneRecordForEachKey) {
  CProviderData store;
  for (int round = 0; round < 2; ++round) {  // again after Clear
    EXPECT_EQ("Stations: 0   Programmes: 0   Schedule Items: 0", store.GetStatistics().View());
    EXPECT_EQ(nullptr, store.GetStation(0));
    EXPECT_TRUE(store.provider_id.IsEmpty() && store.base_time_text.IsEmpty());
    for (const char* const key : {"one", "One", "one", "two"}) {
      auto station = std::make_unique<CStation>();
      auto program = std::make_unique<CProgram>();
      station->key = program->key = key;
      const bool is_new = store.FindStation(key) == nullptr;
      EXPECT_EQ(is_new, store.AddStation(station));
      EXPECT_EQ(is_new, store.AddProgram(program));
      EXPECT_EQ(key, store.FindProgram(key)->key.View());
    }
    EXPECT_EQ(store.GetStation(1), store.FindStation("One"));
    EXPECT_TRUE(store.GetStation(3) == nullptr && store.GetStation(-1) == nullptr);
    std::pair<Time, Time> range = {5, 6};
    store.GetTimeRange(range.first, range.second);
    EXPECT_EQ((std::pair{5, 6}), range);
    Insert(*store.GetStation(1), 600, 2000);
    Insert(*store.GetStation(1), 700, 900);
    Insert(*store.GetStation(2), 500, 800);
    store.GetTimeRange(range.first, range.second);
    EXPECT_EQ((std::pair{500, 2000}), range);
    EXPECT_EQ("Stations: 3   Programmes: 3   Schedule Items: 3", store.GetStatistics().View());
    store.provider_id = store.base_time_text = "set";
    store.Clear();
  }
  MSTR status;
  EXPECT_FALSE(store.ImportXML("listings.xml", status, nullptr));
  EXPECT_EQ("CProviderData::ImportXML() - This function does nothing in the base class.",
            status.View());
}

}  // namespace
