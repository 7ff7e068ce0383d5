#include "schedule/station.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "schedule/provider_data.h"
#include "tests/support/resources.h"
#include "tests/support/test_support.h"
#include "text/counted_text.h"

namespace {

using Time = std::int32_t;
using Start = std::optional<std::int64_t>;

Time At(const std::string& time) { return epg_test::At("2007-02-05 " + time); }

CScheduleMemory memory;  // of all stations here

// True when the station has taken the item.
bool Insert(CStation& station, Time start, Time end) {
  CNewRecord<CScheduleItem> item(memory.items, memory.texts);
  std::tie(item->start, item->end) = std::pair(start, end);
  return station.Insert(item);
}

Start StartOf(const CScheduleItem* item) { return item != nullptr ? Start(item->start) : Start(); }

// The time index, kept and asked the plain way.
struct PlainIndex {
  bool Insert(Time start, Time item_end) {
    if (items.empty()) std::tie(base, end) = std::pair(start, item_end);
    if (!items.try_emplace(start, item_end).second) return false;
    while (start < base) base -= 180;
    end = std::max(end, item_end);
    return true;
  }
  std::int64_t BucketOf(std::int64_t time) const { return (time - base) / 180; }

  Start Find(Time from, Time to) const {
    if (items.empty() || to <= items.begin()->first || from >= end) return {};
    const std::int64_t bucket = BucketOf(std::max<std::int64_t>(from, base));
    // The earliest of its bucket, or of the next one below that holds any.
    auto item = std::prev(items.lower_bound(base + (bucket + 1) * 180));
    item = items.lower_bound(base + BucketOf(item->first) * 180);
    if (item != items.begin() && std::prev(item)->second > from) return std::prev(item)->first;
    while (item != items.end() && item->second <= from) ++item;
    return item != items.end() && item->first < to ? Start(item->first) : Start();
  }

  std::map<std::int64_t, Time> items;  // end by start
  std::int64_t base = 0;
  Time end = 0;
};

void ExpectSame(const PlainIndex& plain, const CStation& station) {
  std::map<std::int64_t, Time> items;
  std::vector<const CScheduleItem*> buckets;
  const CScheduleItem* previous = nullptr;
  for (const CScheduleItem* item = station.FirstItem(); item != nullptr; item = item->next) {
    ASSERT_TRUE(item->previous == previous && (!previous || previous->start < item->start));
    items[item->start] = item->end;
    buckets.resize(static_cast<std::size_t>(plain.BucketOf(item->start) + 1));
    if (buckets.back() == nullptr) buckets.back() = item;
    previous = item;
  }
  ASSERT_EQ(std::tuple(plain.items, plain.base, plain.end),
            std::tuple(items, station.IndexBase(), station.ScheduleEnd()));
  ASSERT_TRUE(std::equal(buckets.begin(), buckets.end(), station.Buckets().begin(),
                         station.Buckets().end()));
}

TEST(TimeIndex, IsThePlainOneAfterEveryInsertion) {
  std::mt19937_64 random(16010101);
  const auto between = [&random](std::int64_t low, std::int64_t high) {
    return static_cast<Time>(std::uniform_int_distribution(low, high)(random));
  };
  for (const auto& [low, high] : {std::pair{0, 600}, {-3000, 86'400}, {213'000'000, 226'000'000}}) {
    for (int series = 0; series < 6; ++series) {
      std::vector<Time> starts(100);
      for (Time& start : starts) start = between(low, high);
      if (series % 3 == 1) std::sort(starts.begin(), starts.end());
      if (series % 3 == 2) std::sort(starts.rbegin(), starts.rend());

      CStation station;
      PlainIndex plain;
      for (const Time start : starts) {
        const Time end = start + between(-30, series < 3 ? 600 : 60);
        ASSERT_EQ(plain.Insert(start, end), Insert(station, start, end));
        ASSERT_NO_FATAL_FAILURE(ExpectSame(plain, station)) << series;
      }
      station.BuildProgramIndex();
      for (int i = 0; i < 600; ++i) {
        const Time from = between(plain.base - 400, plain.end + 400LL);
        const Time to = between(from - 100, from + 800LL);
        ASSERT_EQ(plain.Find(from, to), StartOf(station.FindFirstProgram(from, to))) << from;
      }
      std::int32_t position = 0;
      for (const auto& [start, end] : plain.items)
        ASSERT_EQ(start, station.GetProgram(position++)->start);
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
}

#if defined(EPG_SANITIZED)
constexpr bool kMemoryIsOurs = false;  // there is a shadow of all that is looked at
#else
constexpr bool kMemoryIsOurs = true;
#endif

TEST(TimeIndex, SpansMillenniaWithoutTheirMemory) {
  std::vector dates = {Time{0}, At("20:15"), Time{INT32_MAX - 60}};
  std::deque<CStation> stations;
  const std::int64_t before = epg_test::PeakMemory();
  while (stations.size() < (kMemoryIsOurs ? 100 : 10)) {
    CStation& station = stations.emplace_back();
    std::next_permutation(dates.begin(), dates.end());
    for (const Time date : dates) Insert(station, date, date + 60);
    Insert(station, At("12:00"), At("13:00"));
    station.BuildProgramIndex();
    EXPECT_EQ(At("12:00"), StartOf(station.FindFirstProgram(At("12:30"), At("13:00"))));
    ASSERT_TRUE(!kMemoryIsOurs || epg_test::PeakMemory() - before < 1'000'000);
  }
}

TEST(FindFirstProgram, AnswersAroundAGap) {
  CStation station;
  Insert(station, At("10:00"), At("11:30"));
  Insert(station, At("08:00"), At("10:00"));
  Insert(station, At("16:00"), At("17:00"));
  station.BuildProgramIndex();
  std::istringstream rows(
      "08:00 08:30 08:00  09:59 10:30 08:00  10:00 10:30 10:00  11:29 11:30 10:00  "
      "11:30 16:00 none   11:30 16:01 16:00  16:59 17:00 16:00  17:00 18:00 none   "
      "07:00 08:00 none   07:00 08:01 08:00  12:00 08:01 none   13:01 16:01 16:00");
  for (std::string from, to, start; rows >> from >> to >> start;) {
    EXPECT_EQ(start == "none" ? Start() : At(start),
              StartOf(station.FindFirstProgram(At(from), At(to))));
  }
}

TEST(ProviderData, KeepsOneRecordForEachKey) {
  CProviderData store;
  for (int round = 0; round < 2; ++round) {  // again after Clear
    EXPECT_EQ("Stations: 0   Programmes: 0   Schedule Items: 0", ViewOf(store.GetStatistics()));
    for (const char* const key : {"empty", "one", "One", "one", "two"}) {
      auto station = std::make_unique<CStation>();
      auto program = store.NewProgram();
      station->key = program->key = program.Texts().Keep(key);
      const bool is_new = store.FindStation(key) == nullptr;
      EXPECT_EQ(is_new, store.AddStation(station));
      EXPECT_EQ(key, store.AddProgram(program)->key.View());
      EXPECT_EQ(is_new, program.IsEmpty());
    }
    EXPECT_EQ(store.GetStation(2), store.FindStation("One"));
    Insert(*store.GetStation(1), 600, 900);
    Insert(*store.GetStation(2), 500, 2000);
    Insert(*store.GetStation(3), 700, 800);
    std::pair<Time, Time> range;
    store.GetTimeRange(range.first, range.second);
    EXPECT_EQ((std::pair{500, 2000}), range);
    EXPECT_EQ("Stations: 4   Programmes: 4   Schedule Items: 3", ViewOf(store.GetStatistics()));
    store.Clear();
  }
}

TEST(ScheduleMemory, GivesOutAgainWhatWasRefused) {
  CProviderData store;
  const void* item_place = nullptr;
  const void* text_place = nullptr;
  // An item with two texts, the first long or a short one, that is not filed.
  const auto refuse = [&](const std::string& first, const std::string& second) {
    auto item = store.NewItem();
    item->hd = item.Texts().Keep(first);
    item->premiere = item.Texts().Keep(second);
    EXPECT_EQ(first, item->hd.View());
    EXPECT_EQ(second, item->premiere.View());
    const void* const stored = item->hd.Characters() + first.size() + 1 - CText::StoredBytes(first);
    if (item_place == nullptr) item_place = &*item, text_place = stored;
    EXPECT_EQ(item_place, &*item);
    EXPECT_TRUE(first.empty() || text_place == stored);
  };
  for (std::size_t length = 0; length < 300; ++length) {
    // What stood after a long text must not be remembered when another one goes there.
    const std::string text(length, 'a');
    refuse(std::string(1000, 'b'), text);
    refuse(text, std::string(2000, 'c'));
  }
  // A station with its items and texts, more than are noted one by one.
  const CScheduleMemory::Mark before = store.Memory().GetMark();
  CStation station;
  for (Time start = 0; start < 10'000; ++start) {
    auto item = store.NewItem();
    item->start = start;
    item->hd = item.Texts().Keep("HD " + std::to_string(start));
    EXPECT_TRUE(station.Insert(item));
  }
  store.Memory().WindBack(before);
  refuse("HD 9990", std::string(1'000'000, 'c'));
}

TEST(PointerArray, GrowsSixteenFurther) {
  CPointerArray<const int> array;
  const int entry = 0;
  array.Append(&entry);
  EXPECT_EQ(17, array.Capacity());
  while (array.Count() < 18) array.Append(&entry);
  EXPECT_EQ(34, array.Capacity());
  EXPECT_THROW(array.SetSize(INT32_MAX), std::bad_alloc);
  EXPECT_EQ(18, std::count(array.begin(), array.end(), &entry));
}

}  // namespace
