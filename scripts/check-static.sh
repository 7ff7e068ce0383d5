#!/bin/sh
# Runs the static analysis of .clang-tidy over the product's sources, in the release-clang build; not
# over those for Windows, which that build does not have.
set -eu
cd "$(dirname "$0")/.."
echo "== static analysis"
cmake --preset release-clang >/dev/null
scripts/sources.sh text host platform xml schedule import browser plugin app tools | grep '\.cc$' |
  grep -v '/windows_' |
  xargs -P "$(nproc)" -n 2 clang-tidy -p build/release-clang --quiet
