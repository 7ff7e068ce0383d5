#!/bin/sh
# Fails unless the module named on the command line exports exactly its two entry points, and has no
# symbol that would keep it from being unloaded.
set -eu
case "$1" in
  *.dll)
    exported=$(x86_64-w64-mingw32-objdump -p "$1" |
      sed -n '/Ordinal\/Name Pointer/,/^$/p' | awk '$1 == "[" { print $3 }' | sort | tr '\n' ' ')
    ;;
  *)
    exported=$(nm -D --defined-only "$1" | awk '{print $3}' | sort | tr '\n' ' ')
    if nm "$1" | grep ' u '; then
      echo "$1 holds unique global symbols" >&2
      exit 1
    fi
    ;;
esac
if [ "$exported" != "Initialise Release " ]; then
  echo "$1 exports: $exported" >&2
  exit 1
fi
