#include "schedule/station.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
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
  item->start = start;
  item->end = end;
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
    while (item != items.end() && item->second <= from) ++item;
    return item != items.end() && item->first < to ? Start(item->first) : Start();
  }

  // Where nothing overlaps: the earliest item that has not ended at `from`.
  Start FindInOrder(Time from, Time to) const {
    for (const auto& [start, item_end] : items) {
      if (item_end > from) return start < to ? Start(start) : Start();
    }
    return {};
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
                           {0, INT32_MAX, 5, 3}};
  for (const auto& [low, high, count, queries] : spans) {
    for (int series = 0; series < 6; ++series) {
      const bool overlapping = series % 2 == 0;
      std::vector<std::pair<Time, Time>> items;
      for (int i = 0; i < count; ++i) items.emplace_back(between(low, high), 0);
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
        const Time to = between(from - 100, from + 800LL);
        const Start found = StartOf(station.FindFirstProgram(from, to));
        ASSERT_EQ(plain.Find(from, to), found) << from << ' ' << to;
        if (!overlapping && from < to)
          ASSERT_EQ(plain.FindInOrder(from, to), found) << from << ' ' << to;
      }
      station.BuildProgramIndex();
      ASSERT_EQ(station.CountItems(), station.GetProgramCount());
      for (std::int32_t i = 0; i < station.CountItems(); ++i) {
        ASSERT_EQ(std::next(plain.items.begin(), i)->first, station.GetProgram(i)->start);
        ASSERT_EQ(i, station.IndexOf(*station.GetProgram(i)));
      }
    }
  }
}

TEST(TimeIndex, HasBucketsOfThreeHours) {
  CStation station;
  for (const char* const start : {"10:00", "08:00", "16:00"}) {
    EXPECT_TRUE(Insert(station, At(start), At("17:00")));
    EXPECT_FALSE(Insert(station, At(start), At("23:00")));
  }
  std::vector<Start> starts;
  for (const CScheduleItem* const item : station.Buckets()) starts.push_back(StartOf(item));
  EXPECT_EQ((std::vector<Start>{At("08:00"), At("10:00"), {}, At("16:00")}), starts);
  EXPECT_EQ(At("07:00"), station.IndexBase());
  EXPECT_EQ(At("17:00"), station.ScheduleEnd());
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
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

TEST(TimeIndex, SpansMillenniaWithoutTheirMemory) {
  std::vector dates = {At("20:15"), Time{0}, Time{INT32_MAX - 60}};
  std::vector<std::unique_ptr<CStation>> stations;
  const long before = PeakMemory();
  while (stations.size() < 100) {
    CStation& station = *stations.emplace_back(std::make_unique<CStation>());
    std::next_permutation(dates.begin(), dates.end());
    for (const Time date : dates) EXPECT_TRUE(Insert(station, date, date + 60));
    EXPECT_TRUE(Insert(station, At("12:00"), At("13:00")));
    EXPECT_EQ(At("12:00"), StartOf(station.FindFirstProgram(At("12:30"), At("13:00"))));
    ASSERT_LT(PeakMemory() - before, 1'000'000);
  }
}

TEST(FindFirstProgram, AnswersAroundAGap) {
  CStation station;
  EXPECT_EQ(nullptr, station.FindFirstProgram(At("08:00"), At("08:30")));
  Insert(station, At("08:00"), At("09:00"));
  Insert(station, At("09:00"), At("10:30"));
  Insert(station, At("13:00"), At("14:00"));
  // A "-" is for none.
  const char* const rows[] = {"08:00 08:30 08:00", "08:59 09:30 08:00", "09:00 09:30 09:00",
                              "10:00 10:15 09:00", "11:00 13:00 -",     "11:00 13:01 13:00",
                              "14:00 15:00 -",     "07:00 08:00 -",     "07:00 08:01 08:00",
                              "13:30 08:01 -"};
  for (const std::string row : rows) {
    const Start found =
        StartOf(station.FindFirstProgram(At(row.substr(0, 5)), At(row.substr(6, 5))));
    EXPECT_EQ(row.substr(12) == "-" ? Start() : At(row.substr(12)), found) << row;
  }
  station.BuildProgramIndex();
  EXPECT_EQ(3, station.IndexOf(CScheduleItem()));
  EXPECT_EQ(nullptr, station.GetProgram(3));
  EXPECT_EQ(nullptr, station.GetProgram(-1));
}

TEST(Station, IsLabelledByNetworkAndCallSign) {
  const char* const rows[][3] = {{"", "", ""},
                                 {"", "City One", "City One"},
                                 {"Metro", "City One", "Metro/City One"},
                                 {"Metro", "", "Metro/"}};
  for (const auto& [network, call_sign, label] : rows) {
    CStation station;
    station.network = network;
    station.call_sign = call_sign;
    EXPECT_EQ(label, station.GetLabel().View());
  }
}

TEST(PointerArray, GrowsSixteenFurther) {
  CPointerArray<const int> array;
  const int entry = 0;
  const std::int32_t rows[][2] = {{1, 17}, {17, 17}, {18, 34}, {35, 51},
                                  {5, 51}, {60, 76}, {0, 0},   {2, 18}};
  for (const auto& [size, capacity] : rows) {
    array.SetSize(size - 1);
    array.Append(&entry);
    EXPECT_EQ(capacity, array.Capacity()) << size;
  }
  try {
    array.SetSize(INT32_MAX);
    FAIL();
  } catch (const std::bad_alloc& error) {
    EXPECT_STREQ("bad allocation", error.what());
  }
  EXPECT_EQ(2, array.Count());
  EXPECT_EQ(&entry, array[1]);
}

TEST(ProviderData, KeepsOneRecordForEachKey) {
  CProviderData store;
  const auto add_station = [&store](const char* key) {
    auto station = std::make_unique<CStation>();
    station->key = key;
    return store.AddStation(station) ? station == nullptr : station == nullptr;
  };
  const auto add_program = [&store](const char* key) {
    auto program = std::make_unique<CProgram>();
    program->key = key;
    return store.AddProgram(program);
  };
  for (int round = 0; round < 2; ++round) {  // once more after Clear
    EXPECT_EQ("Stations: 0   Programmes: 0   Schedule Items: 0", store.GetStatistics().View());
    EXPECT_EQ(nullptr, store.GetStation(0));
    EXPECT_EQ(nullptr, store.FindStation("one"));
    EXPECT_EQ(nullptr, store.FindProgram("one"));
    EXPECT_TRUE(store.provider_id.IsEmpty() && store.base_time_text.IsEmpty());
    for (const char* const key : {"one", "One", "two"}) EXPECT_TRUE(add_station(key));
    EXPECT_FALSE(add_station("One"));
    EXPECT_TRUE(add_program("one"));
    EXPECT_FALSE(add_program("one"));
    EXPECT_EQ(nullptr, store.FindProgram("One"));
    EXPECT_EQ("one", store.FindProgram("one")->key.View());
    EXPECT_EQ(store.GetStation(1), store.FindStation("One"));
    EXPECT_EQ(nullptr, store.GetStation(3));
    EXPECT_EQ(nullptr, store.GetStation(-1));

    Time start = 5;
    Time end = 6;
    store.GetTimeRange(start, end);
    EXPECT_EQ((std::pair{5, 6}), (std::pair{start, end}));
    Insert(*store.GetStation(1), 600, 2000);
    Insert(*store.GetStation(1), 700, 900);
    Insert(*store.GetStation(2), 500, 800);
    store.GetTimeRange(start, end);
    EXPECT_EQ((std::pair{500, 2000}), (std::pair{start, end}));
    EXPECT_EQ("Stations: 3   Programmes: 1   Schedule Items: 3", store.GetStatistics().View());
    store.provider_id = store.base_time_text = "set";
    store.Clear();
  }
  MSTR status;
  EXPECT_FALSE(store.ImportXML("listings.xml", status, nullptr));
  EXPECT_EQ("CProviderData::ImportXML() - This function does nothing in the base class.",
            status.View());
}

}  // namespace
