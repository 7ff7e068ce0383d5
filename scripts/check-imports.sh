#!/bin/sh
# Fails unless the module named on the command line takes from the engine exactly what
# plugin/imports.txt lists: whoever has another engine must give it these. A module for Windows has
# the types' names in itself, and its numbers of 64 bits are called `long long`.
#
#   scripts/check-imports.sh MODULE          compares
#   scripts/check-imports.sh MODULE --write  writes the list
set -eu
cd "$(dirname "$0")/.."
symbols() {
  case "$1" in
    *.dll)
      x86_64-w64-mingw32-objdump -p "$1" |
        awk '/DLL Name:/ { library = $3 } library == "orvane.dll" && NF == 3 { print $3 }' ;;
    *) nm -D --undefined-only "$1" | awk '{ print $2 }' | sed 's/@.*//' ;;
  esac
}
imports() {
  {
    echo "# What the plug-in imports from the engine, a symbol a line."
    symbols "$1" | c++filt | grep 'ORVANE::' | LC_ALL=C sort
  }
}
if [ "${2:-}" = --write ]; then
  imports "$1" >plugin/imports.txt
  exit 0
fi
listed=$(mktemp)
trap 'rm -f "$listed"' EXIT
case "$1" in
  *.dll) sed '/^typeinfo for /d; s/(long,/(long long,/' plugin/imports.txt ;;
  *) cat plugin/imports.txt ;;
esac >"$listed"
if ! imports "$1" | diff -u "$listed" - >&2; then
  echo "$1 imports something else than plugin/imports.txt lists." >&2
  exit 1
fi
