#!/bin/sh
# Builds the tests and runs them all.
#
#   scripts/test.sh          the release build
#   scripts/test.sh --all    with both compilers and under the sanitizers, a little fuzzing, and the
#                            checks of formatting, static analysis and the package: what
#                            continuous integration runs
set -eu
cd "$(dirname "$0")/.."

build_and_test() {
  echo "== $1"
  preset="$1"
  shift
  cmake --preset "$preset" -DEPG_TESTS=ON -DEPG_TOOLS=ON "$@" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset" -j "$(nproc)"
}

case "${1:-}" in
  "")
    scripts/setup.sh test
    build_and_test release
    ;;
  --all)
    scripts/setup.sh check
    scripts/check-format.sh
    build_and_test release -DEPG_BENCH=ON
    build_and_test release-clang
    build_and_test asan
    # The companion program has one thread.
    build_and_test tsan -DEPG_TOOLS=OFF
    scripts/fuzz.sh --runs 3000
    scripts/check-static.sh
    # Only root can make the clean root that the package goes into.
    if [ "$(id -u)" -eq 0 ]; then scripts/package.sh --check; else scripts/package.sh; fi
    ;;
  *)
    echo "usage: $0 [--all]" >&2
    exit 2
    ;;
esac
echo "All passed."
