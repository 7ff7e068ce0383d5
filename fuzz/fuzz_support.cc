#include "fuzz/fuzz_support.h"

#include <algorithm>
#include <limits>

namespace fuzz {

namespace {

// The rule of FindFirstProgram, step by step.
const CScheduleItem* WalkToFirstProgram(const CStation& station, std::int32_t from,
                                        std::int32_t to) {
  const CScheduleItem* item = station.FirstItem();
  if (item == nullptr || to <= item->start || from >= station.ScheduleEnd()) return nullptr;
  const auto& buckets = station.Buckets();
  std::int64_t k = (from - station.IndexBase()) / CStation::kBucketMinutes;
  k = std::clamp<std::int64_t>(k, 0, buckets.Count() - 1);
  while (buckets[static_cast<std::int32_t>(k)] == nullptr) --k;
  item = buckets[static_cast<std::int32_t>(k)];
  if (item->previous != nullptr && item->previous->end > from) return item->previous;
  while (item != nullptr && item->end <= from) item = item->next;
  return item != nullptr && item->start < to ? item : nullptr;
}

void CheckQueries(const CStation& station, std::int32_t time) {
  for (const std::int32_t span : {1, 60, 100000}) {
    const auto to = static_cast<std::int32_t>(std::min<std::int64_t>(
        std::int64_t{time} + span, std::numeric_limits<std::int32_t>::max()));
    Check(station.FindFirstProgram(time, to) == WalkToFirstProgram(station, time, to),
          "a query's answer is that of the plain walk");
  }
}

void CheckStation(const CStation& station) {
  std::int32_t count = 0;
  std::int32_t set_buckets = 0;
  std::int64_t bucket_before = -1;
  std::int32_t end = station.ScheduleEnd();
  const CScheduleItem* before = nullptr;
  for (const CScheduleItem* item = station.FirstItem(); item != nullptr; item = item->next) {
    Check(item->previous == before, "links go both ways");
    Check(before == nullptr || before->start < item->start, "starts increase strictly");
    Check(item->end <= end, "no item ends after the schedule's end");
    const std::int64_t bucket = (item->start - station.IndexBase()) / CStation::kBucketMinutes;
    Check(item->start >= station.IndexBase() && bucket < station.Buckets().Count(),
          "every item lies in the table");
    if (bucket != bucket_before) {
      Check(station.Buckets()[static_cast<std::int32_t>(bucket)] == item,
            "a bucket holds the earliest item of its range");
      ++set_buckets;
    }
    Check(station.GetProgram(count) == item, "the programme index is in start order");
    if (count < 64) {
      Check(station.IndexOf(*item) == count, "a position leads back to itself");
      CheckQueries(station, item->start);
      CheckQueries(station, item->end);
      CheckQueries(station, item->start / 2 + item->end / 2);
    }
    bucket_before = bucket;
    before = item;
    ++count;
  }
  Check(station.GetProgramCount() == count && station.CountItems() == count, "counts agree");
  if (station.Buckets().Count() < 100000) {
    Check(std::count_if(station.Buckets().begin(), station.Buckets().end(),
                        [](const CScheduleItem* item) { return item != nullptr; }) == set_buckets,
          "other buckets are empty");
  }
}

}  // namespace

void CheckSchedule(const CProviderData& store) {
  for (std::int32_t i = 0; i < store.GetStationCount(); ++i) {
    const CStation& station = *store.GetStation(i);
    Check(store.FindStation(station.key.View()) == &station, "a station is found by its key");
    CheckStation(station);
  }
}

}  // namespace fuzz
