#!/bin/sh
# Builds the plug-in and its console host, and shows the guide of the sample week.
#
#   scripts/run-sample.sh        an evening of it
#   scripts/run-sample.sh tour   what the fifteen script methods answer; the log goes to standard error
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh build
{
  cmake --preset release -DEPG_TESTS=OFF
  cmake --build --preset release
} >&2
if [ "${1:-}" = tour ]; then
  exec build/release/bin/epgshell run samples/tour.script
fi
echo 'epgshell guide samples/week --at "2026-11-23 20:00"' >&2
exec build/release/bin/epgshell guide samples/week --at "2026-11-23 20:00"
