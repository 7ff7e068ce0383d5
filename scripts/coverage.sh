#!/bin/sh
# Builds with coverage counters, runs all tests, and prints the lines and branches covered, by file.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh coverage
cmake --preset coverage -DEPG_TESTS=ON -DEPG_TOOLS=ON >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
ctest --preset coverage -j "$(nproc)" --quiet
for metric in "" --branches; do
  # Branches that only an exception takes are the compiler's, not ours.
  gcovr --root . --exclude 'tests/.*' --exclude 'fuzz/.*' --exclude-throw-branches \
    --exclude-unreachable-branches $metric build/coverage
done
