#!/bin/sh
# Builds the fuzz targets and runs each for a while, from the inputs kept in fuzz/corpus. A crash
# leaves its input in build/fuzz/found; once mended, it joins the corpus.
#
#   scripts/fuzz.sh [SECONDS]     each target for so long (default: 60)
#   scripts/fuzz.sh --runs COUNT  each target for so many inputs
set -eu
cd "$(dirname "$0")/.."
case "${1:-}" in
  --runs) limit="-runs=$2" ;;
  *) limit="-max_total_time=${1:-60}" ;;
esac
scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target listings_fuzz mxml_fuzz reader_fuzz script_fuzz template_fuzz \
  time_fuzz
for target in listings mxml reader script template time; do
  echo "== $target"
  grown=build/fuzz/corpus/$target
  mkdir -p "$grown" build/fuzz/found
  dictionary=""
  [ ! -e "fuzz/$target.dict" ] || dictionary="-dict=fuzz/$target.dict"
  # shellcheck disable=SC2086  # nothing, or one word
  "build/fuzz/bin/${target}_fuzz" $limit $dictionary -max_len=4096 -print_final_stats=1 \
    -artifact_prefix="build/fuzz/found/$target-" "$grown" "fuzz/corpus/$target" 2>&1 |
    grep -vE '^#[0-9]+[[:space:]]*(NEW|REDUCE|RELOAD|pulse)|^INFO: |^[[:space:]]*$' || true
  if ls "build/fuzz/found/$target-"* >/dev/null 2>&1; then
    echo "failing inputs in build/fuzz/found" >&2
    exit 1
  fi
done
