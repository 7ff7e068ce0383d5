#!/bin/sh
# Prints the C++ files of the folders named on the command line (default: all of ours), sorted.
set -eu
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- text host platform xml schedule import browser plugin app tools tests bench fuzz
find "$@" -name '*.h' -o -name '*.cc' | sort
