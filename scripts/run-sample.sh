#!/bin/sh
# Builds the plug-in and its console host, and runs the tour of the script methods on the sample week.
# What the script's calls answer goes to standard output, all else to standard error.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh build
{
  cmake --preset release -DEPG_TESTS=OFF
  cmake --build --preset release
} >&2
exec build/release/bin/epgshell run samples/tour.script
