#!/bin/sh
# Makes sure that the commands and libraries named on the command line are there: as root, or where
# sudo asks for no password, by installing their Debian packages; otherwise by saying what is missing.
#
#   scripts/setup.sh build     what building and running needs
#   scripts/setup.sh tools     and the companion programs
#   scripts/setup.sh test      and the tests of all of it
#   scripts/setup.sh fuzz      and fuzzing: clang with its sanitizers
#   scripts/setup.sh coverage  and measuring what the tests cover
#   scripts/setup.sh bench     and the benchmarks
#   scripts/setup.sh package   and making packages
#   scripts/setup.sh package-check  and installing one into a clean root
#   scripts/setup.sh page      and trying the web page in a browser
#   scripts/setup.sh windows   and building and testing for Windows
#   scripts/setup.sh check     and the other checks: second compiler, formatting, static analysis
set -eu

packages="g++ cmake ninja-build libcli11-dev nlohmann-json3-dev"
tools="libarchive-dev libicu-dev libxml2-dev"
tests="$tools libgmock-dev libgtest-dev libpugixml-dev python3 python3-jsonschema xz-utils bzip2 zip zstd"
case "${1:-build}" in
  build) ;;
  tools) packages="$packages $tools" ;;
  test) packages="$packages $tests" ;;
  fuzz) packages="$packages $tests clang libclang-rt-14-dev" ;;
  coverage) packages="$packages $tests gcovr" ;;
  bench) packages="$packages libbenchmark-dev libexpat1-dev libpugixml-dev python3" ;;
  package) packages="$packages $tools dpkg-dev file" ;;
  package-check) packages="$packages $tools dpkg-dev file lintian debootstrap" ;;
  page) packages="$packages chromium chromium-driver python3-selenium" ;;
  windows) packages="$packages $tests g++-mingw-w64-x86-64-posix googletest wine wine64 xvfb xauth xdotool zip unzip" ;;
  check) packages="$packages $tests libbenchmark-dev libexpat1-dev clang libclang-rt-14-dev clang-format clang-tidy" ;;
  *)
    echo "usage: $0 [build | tools | test | fuzz | coverage | bench | package | package-check | page | windows | check]" >&2
    exit 2
    ;;
esac

# A library is there when this header is.
header_of() {
  case "$1" in
    libarchive-dev) echo archive_entry.h ;;
    libbenchmark-dev) echo benchmark/benchmark.h ;;
    libexpat1-dev) echo expat.h ;;
    libcli11-dev) echo CLI/CLI.hpp ;;
    libgmock-dev) echo gmock/gmock.h ;;
    libgtest-dev) echo gtest/gtest.h ;;
    libicu-dev) echo unicode/translit.h ;;
    libpugixml-dev) echo pugixml.hpp ;;
    nlohmann-json3-dev) echo nlohmann/json.hpp ;;
    libxml2-dev) echo libxml2/libxml/xmlreader.h ;;
    *) echo "$0: no header is known for $1" >&2; exit 2 ;;
  esac
}

has_header() {
  for header in "/usr/include/$1" /usr/include/*/"$1"; do
    [ ! -e "$header" ] || return 0
  done
  return 1
}

command_of() {
  case "$1" in
    g++-mingw-w64-x86-64-posix) echo x86_64-w64-mingw32-g++-posix ;;
    chromium-driver) echo chromedriver ;;
    ninja-build) echo ninja ;;
    wine64) echo wine ;;
    xvfb) echo Xvfb ;;
    xz-utils) echo xz ;;
    *) echo "$1" ;;
  esac
}

missing=""
for package in $packages; do
  case "$package" in
    libclang-rt-14-dev)
      ls /usr/lib/clang/14*/lib/linux/libclang_rt.fuzzer* /usr/lib/llvm-14/lib/clang/*/lib/linux/libclang_rt.fuzzer* \
        >/dev/null 2>&1 || dpkg -s "$package" >/dev/null 2>&1 || missing="$missing $package" ;;
    python3-selenium | python3-jsonschema)
      [ -e "/usr/lib/python3/dist-packages/${package#python3-}" ] || missing="$missing $package" ;;
    googletest) [ -e /usr/src/googletest/CMakeLists.txt ] || missing="$missing $package" ;;
    dpkg-dev) command -v dpkg-shlibdeps >/dev/null 2>&1 || missing="$missing $package" ;;
    *-dev) has_header "$(header_of "$package")" || missing="$missing $package" ;;
    *) command -v "$(command_of "$package")" >/dev/null 2>&1 || missing="$missing $package" ;;
  esac
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
    as_root="sudo -n"
  else
    as_root=none
  fi
fi
if [ "$as_root" = none ] || ! command -v apt-get >/dev/null 2>&1; then
  echo "These Debian packages (or what they stand for on your system) are missing:$missing" >&2
  echo "Install them and try again; as root this script does it by itself." >&2
  exit 1
fi
echo "Installing:$missing" >&2
export DEBIAN_FRONTEND=noninteractive
$as_root apt-get update -q >&2
# shellcheck disable=SC2086  # a list of words
$as_root apt-get install -y -q --no-install-recommends $missing >&2
