#!/bin/sh
# Builds the tests and runs them all.
#
#   scripts/test.sh          the release build
#   scripts/test.sh --windows  the release build, and that for Windows, under Wine
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
  --windows)
    scripts/setup.sh test
    build_and_test release
    scripts/test-windows.sh
    ;;
  --all)
    scripts/setup.sh check
    scripts/check-format.sh
    build_and_test release -DEPG_BENCH=ON
    scripts/setup.sh page
    scripts/check-page.py
    build_and_test release-clang
    # AddressSanitizer and UndefinedBehaviorSanitizer, in the build that fuzzing needs anyway.
    build_and_test fuzz
    scripts/fuzz.sh --runs 3000
    echo "== tsan"
    cmake --preset tsan -DEPG_TESTS=ON -DEPG_TOOLS=OFF >/dev/null
    cmake --build --preset tsan --target thread_tests
    ctest --preset tsan -j "$(nproc)" -L threads
    echo "== asan, the reader's search byte by byte"
    cmake --preset asan -DEPG_TESTS=ON -DEPG_TOOLS=OFF -DEPG_PLAIN_SEARCH=ON >/dev/null
    cmake --build --preset asan --target epgbrowser xml_reader_test xmltv_import_test reader_fuzz
    for program in xml_reader_test xmltv_import_test; do build/asan/bin/$program --gtest_brief=1; done
    build/asan/bin/reader_fuzz fuzz/corpus/reader
    for preset in debug debug-clang asan-clang tsan-clang; do
      echo "== $preset, the module alone"
      cmake --preset "$preset" -DEPG_TESTS=OFF -DEPG_TOOLS=OFF >/dev/null
      cmake --build --preset "$preset" --target epgbrowser
    done
    scripts/test-windows.sh
    echo "== windows-debug, the module alone"
    cmake --preset windows-debug -DEPG_TESTS=OFF >/dev/null
    cmake --build --preset windows-debug --target epgbrowser
    scripts/check-static.sh
    # Only root can make the clean root that the package goes into.
    if [ "$(id -u)" -eq 0 ]; then scripts/package.sh --check; else scripts/package.sh; fi
    ;;
  *)
    echo "usage: $0 [--windows | --all]" >&2
    exit 2
    ;;
esac
echo "All passed."
