#!/bin/sh
# Builds the benchmarks, runs them, and prints their results as a table.
#
#   scripts/bench.sh --loaders [options of scripts/compare-loaders.py]   whole imports, beside other
#                                                                        loaders of the same listings
#   scripts/bench.sh [--listings=FILE] [--benchmark_filter=REGEX and other options of the program]
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh bench
cmake --preset release -DEPG_BENCH=ON >/dev/null
cmake --build --preset release >&2
if [ "${1:-}" = --loaders ]; then
  shift
  exec scripts/compare-loaders.py "$@"
fi
echo "$(date +%F), $(nproc) processors, $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)"
echo
echo "| benchmark | time | MB/s | items/s |"
echo "|---|---|---|---|"
build/release/bin/epg_bench --benchmark_format=csv "$@" 2>/dev/null | awk -F, '
  $1 == "name" { for (i = 1; i <= NF; ++i) column[$i] = i; next }
  !("name" in column) { next }
  {
    name = $column["name"]; label = $column["label"]
    gsub(/"/, "", name); gsub(/"/, "", label)
    sub(/\/(iterations:[0-9]+|manual_time).*/, "", name)
    bytes = $column["bytes_per_second"]; items = $column["items_per_second"]
    printf "| %s%s | %.3g %s | %s | %s |\n", name, label == "" ? "" : " " label,
      $column["real_time"], $column["time_unit"],
      bytes == "" ? "" : sprintf("%.0f", bytes / 1e6), items == "" ? "" : sprintf("%.3g", items)
  }'
