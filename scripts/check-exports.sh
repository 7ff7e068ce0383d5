#!/bin/sh
# Fails unless the module named on the command line exports exactly its two entry points, and has no
# symbol that would keep it from being unloaded.
set -eu
exported=$(nm -D --defined-only "$1" | awk '{print $3}' | sort | tr '\n' ' ')
if [ "$exported" != "Initialise Release " ]; then
  echo "$1 exports: $exported" >&2
  exit 1
fi
if nm "$1" | grep ' u '; then
  echo "$1 holds unique global symbols" >&2
  exit 1
fi
