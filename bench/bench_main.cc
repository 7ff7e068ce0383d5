// Runs the benchmarks; `--listings=FILE` has those that need a finished schedule use that file.

#include <benchmark/benchmark.h>

#include <string_view>
#include <vector>

#include "bench/sample_listings.h"
#include "plugin/entry_points.h"

int main(int argc, char** argv) {
  constexpr std::string_view kListings = "--listings=";
  std::vector<char*> rest;
  for (int i = 0; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument.substr(0, kListings.size()) == kListings) {
      bench::UseListings(std::string(argument.substr(kListings.size())));
    } else {
      rest.push_back(argv[i]);
    }
  }
  int count = static_cast<int>(rest.size());
  benchmark::Initialize(&count, rest.data());
  if (benchmark::ReportUnrecognizedArguments(count, rest.data())) return 1;
  Initialise();
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
