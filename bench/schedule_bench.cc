// Filling and asking a schedule, templates, time texts and the log.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

#include "bench/sample_listings.h"
#include "host/engine.h"
#include "host/mlog.h"
#include "schedule/schedule_memory.h"
#include "schedule/station.h"
#include "schedule/template.h"
#include "schedule/time_value.h"

namespace bench {

namespace {

using ORVANE::MLog;
using ORVANE::MSTR;

constexpr int kItems = 10'000;

// The order in which the items of a station come.
enum Order { kInOrder, kReversed, kRandom };

void InsertItems(benchmark::State& state) {
  std::vector<std::int32_t> starts(kItems);
  std::iota(starts.begin(), starts.end(), 0);
  if (state.range(0) == kReversed) std::reverse(starts.begin(), starts.end());
  if (state.range(0) == kRandom) std::shuffle(starts.begin(), starts.end(), std::mt19937(1));
  static constexpr const char* kLabels[] = {"in order", "reversed", "random"};
  state.SetLabel(kLabels[state.range(0)]);
  for (auto _ : state) {
    CScheduleMemory memory;
    CStation station;
    for (const std::int32_t start : starts) {
      CNewRecord<CScheduleItem> item(memory.items, memory.texts);
      item->start = 220'000'000 + start * 30;
      item->end = item->start + 30;
      station.Insert(item);
    }
    station.BuildProgramIndex();
  }
  state.SetItemsProcessed(state.iterations() * kItems);
}
BENCHMARK(InsertItems)->Arg(kInOrder)->Arg(kReversed)->Arg(kRandom);

const CStation& StationOf(const Query& query) { return *Schedule().GetStation(query.station); }

template <typename Ask>
void AskAll(benchmark::State& state, Ask ask) {
  const std::vector<Query> queries = RandomQueries();
  std::size_t next = 0;
  for (auto _ : state) {
    ask(queries[next]);
    next = (next + 1) % queries.size();
  }
  state.SetItemsProcessed(state.iterations());
}

void FindFirstProgram(benchmark::State& state) {
  AskAll(state, [](const Query& query) {
    benchmark::DoNotOptimize(StationOf(query).FindFirstProgram(query.at, query.at + 1));
  });
}
BENCHMARK(FindFirstProgram);

// The floor: a binary search among the station's items.
void FloorSearchItems(benchmark::State& state) {
  AskAll(state, [](const Query& query) {
    std::int32_t low = 0;
    const CStation& station = StationOf(query);
    std::int32_t high = station.GetProgramCount();
    while (low < high) {
      const std::int32_t middle = (low + high) / 2;
      if (station.GetProgram(middle)->start <= query.at) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    benchmark::DoNotOptimize(low);
  });
}
BENCHMARK(FloorSearchItems);

void ExpandATemplate(benchmark::State& state) {
  const CScheduleItem& item = *Schedule().GetStation(0)->GetProgram(7);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        ExpandTemplate(item, "$Title[$(: )$EpisodeTitle][$(, )$Genre]", false));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ExpandATemplate);

void ExpandAllFields(benchmark::State& state) {
  const CScheduleItem& item = *Schedule().GetStation(0)->GetProgram(7);
  for (auto _ : state) {
    benchmark::DoNotOptimize(ExpandTemplate(
        item,
        "$Time $Title[$(: )$EpisodeTitle][ ($PublishDate)][\\n$Description][\\n$Actors][ $Flags]",
        false));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ExpandAllFields);

void WriteTime(benchmark::State& state) {
  const auto format = static_cast<std::int32_t>(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(ConvertLocalTime2String(224'000'000, format));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(WriteTime)->DenseRange(0, 5);

void ReadTime(benchmark::State& state) {
  const std::string text("20240401183000 +0100");
  for (auto _ : state) benchmark::DoNotOptimize(ParseTime(TimeLayout::kDigits, text));
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(ReadTime);

void HashDescription(benchmark::State& state) {
  const MSTR text(std::string(static_cast<std::size_t>(state.range(0)), 'x').c_str());
  for (auto _ : state) benchmark::DoNotOptimize(text.Id());
  state.SetBytesProcessed(state.iterations() * state.range(0));
}
BENCHMARK(HashDescription)->Arg(8)->Arg(250);

// An entry that the sink drops, so that what is left is the log's own cost.
void LogEntry(benchmark::State& state) {
  ORVANE::SetLogSink([](auto, std::string_view text) { benchmark::DoNotOptimize(text.data()); });
  for (auto _ : state) MLog.Log("Unknown XMLTV data element: %s%s", "", "episode-num");
  ORVANE::SetLogSink({});
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(LogEntry);

}  // namespace

}  // namespace bench
