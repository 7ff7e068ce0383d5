#!/bin/sh
# Fails unless the module named on the command line takes from the engine exactly what
# plugin/imports.txt lists: whoever has another engine must give it these.
#
#   scripts/check-imports.sh MODULE          compares
#   scripts/check-imports.sh MODULE --write  writes the list
set -eu
cd "$(dirname "$0")/.."
imports() {
  {
    echo "# What the plug-in imports from the engine, a symbol a line."
    nm -D --undefined-only "$1" | awk '{ print $2 }' | sed 's/@.*//' | c++filt | grep 'ORVANE::' |
      LC_ALL=C sort
  }
}
if [ "${2:-}" = --write ]; then
  imports "$1" >plugin/imports.txt
elif ! imports "$1" | diff -u plugin/imports.txt - >&2; then
  echo "$1 imports something else than plugin/imports.txt lists." >&2
  exit 1
fi
