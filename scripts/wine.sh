#!/bin/sh
# Runs a Windows program under Wine, with a set-up of its own and nothing written but what the
# program writes.
set -eu
build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX="${WINEPREFIX:-$build/wine}" WINEDEBUG="${WINEDEBUG:--all}"
# Neither a desktop's menus nor a browser or .NET is needed.
export WINEDLLOVERRIDES="winemenubuilder.exe,mscoree,mshtml=d"
mkdir -p "$build"
exec wine "$@"
