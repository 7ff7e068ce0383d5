// What a frame of the engine pays: script calls with everything included, ticks, and starting or
// replacing a load while large schedules come and go.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/sample_listings.h"
#include "browser/epg_browser.h"
#include "host/engine.h"
#include "host/script.h"

namespace bench {

namespace {

using Clock = std::chrono::steady_clock;

// A bound instance whose browser has loaded the listings.
class Guide {
 public:
  static Guide& Get() {
    static Guide guide;
    return guide;
  }

  CEPGBrowser& Browser() { return dynamic_cast<CEPGBrowser&>(*browser_); }

  // A call as a script makes it: arguments, look-up by name, result.
  template <typename... Arguments>
  void Call(const char* method, const Arguments&... arguments) {
    ORVANE::CALL call(instance_.get(), "bench:1");
    (call.AddArgument(arguments), ...);
    if (!call.Run(method)) throw std::runtime_error(method);
    benchmark::DoNotOptimize(call.Result());
  }

  void Load(const std::string& path) {
    Call("InitSchedule", std::string_view(""), std::string_view(""),
         std::string_view(path).substr(0, path.rfind(".xml")));
  }

 private:
  Guide()
      : browser_(ORVANE::CreateEntity("CEPGBrowser")),
        instance_(ORVANE::CreateInstance("EPGBROWSER")) {
    ORVANE::Bind(*instance_, browser_.get());
    Load(ListingsFile());
    Call("GetStationCount");
  }

  ORVANE::ENTITYPTR browser_;
  ORVANE::INSTANCEPTR instance_;
};

void CallGetFirstProgram4Time(benchmark::State& state) {
  Guide& guide = Guide::Get();
  const std::vector<Query> queries = RandomQueries();
  std::size_t next = 0;
  for (auto _ : state) {
    const auto& [station, at] = queries[next];
    guide.Call("GetFirstProgram4Time", station, at, at + 1);
    next = (next + 1) % queries.size();
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CallGetFirstProgram4Time);

void CallGetProgramData(benchmark::State& state) {
  Guide& guide = Guide::Get();
  for (auto _ : state) {
    guide.Call("GetProgramData", std::int32_t{0}, std::int32_t{7},
               std::string_view("$Title[$(: )$EpisodeTitle][$(, )$Genre]"));
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CallGetProgramData);

void CallGetReady(benchmark::State& state) {
  Guide& guide = Guide::Get();
  for (auto _ : state) guide.Call("GetReady");
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(CallGetReady);

void Think(benchmark::State& state) {
  CEPGBrowser& browser = Guide::Get().Browser();
  for (auto _ : state) browser.Think(16);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Think);

void SetSeconds(benchmark::State& state, Clock::duration elapsed) {
  state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
}

// Replaces the schedule by the same one: what the engine's thread pays to start the load,
void StartLoad(benchmark::State& state) {
  Guide& guide = Guide::Get();
  for (auto _ : state) {
    const auto began = Clock::now();
    guide.Load(ListingsFile());
    SetSeconds(state, Clock::now() - began);
    guide.Call("GetStationCount");
  }
}
BENCHMARK(StartLoad)->UseManualTime()->Iterations(20)->Unit(benchmark::kMicrosecond);

// and for its longest tick until the new schedule is adopted and one tick beyond.
void LongestThinkOfAReplacement(benchmark::State& state) {
  Guide& guide = Guide::Get();
  for (auto _ : state) {
    guide.Load(ListingsFile());
    Clock::duration longest = {};
    for (bool loading = true; loading;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      loading = guide.Browser().HasLoader();
      const auto began = Clock::now();
      guide.Browser().Think(16);
      longest = std::max(longest, Clock::now() - began);
    }
    SetSeconds(state, longest);
  }
}
BENCHMARK(LongestThinkOfAReplacement)
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace bench
