#!/bin/sh
# Builds the fuzz targets and runs each for a while, from the inputs kept in fuzz/corpus. A crash
# leaves its input in build/fuzz/found; once mended, it joins the corpus.
#
#   scripts/fuzz.sh [SECONDS]     each target for so long (default: 60)
#   scripts/fuzz.sh --runs COUNT  each target for so many inputs
set -eu
cd "$(dirname "$0")/.."
limit="-max_total_time=${1:-60}"
if [ "${1:-}" = --runs ]; then
  if [ $# -ne 2 ]; then
    echo "usage: $0 [SECONDS | --runs COUNT]" >&2
    exit 2
  fi
  limit="-runs=$2"
fi
scripts/setup.sh fuzz
targets="epgcache guide listings mxml reader script template time"
cmake --preset fuzz -DEPG_TOOLS=ON >/dev/null
# shellcheck disable=SC2046  # a list of words
cmake --build --preset fuzz --target $(for target in $targets; do echo "${target}_fuzz"; done)
for target in $targets; do
  echo "== fuzzing: $target"
  grown=build/fuzz/corpus/$target
  mkdir -p "$grown" build/fuzz/found
  dictionary=""
  [ ! -e "fuzz/$target.dict" ] || dictionary="-dict=fuzz/$target.dict"
  # shellcheck disable=SC2086  # nothing, or one word
  if ! "build/fuzz/bin/${target}_fuzz" $limit $dictionary -max_len=4096 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/found/$target-" "$grown" "fuzz/corpus/$target" \
    >"build/fuzz/$target.log" 2>&1; then
    tail -n 60 "build/fuzz/$target.log" >&2
    echo "$target fails; its input, if it left one, is in build/fuzz/found" >&2
    exit 1
  fi
  grep '^stat::number' "build/fuzz/$target.log"
done
