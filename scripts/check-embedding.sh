#!/bin/sh
# Compiles the host program of docs/embedding.md against what `cmake --install` installs, runs it on
# the sample week, and fails when it does not answer, or when the document leaves out a symbol that
# the module imports.
#
#   scripts/check-embedding.sh BUILD_FOLDER [COMPILER]
set -eu
build=$(cd "$1" && pwd)
compiler=${2:-c++}
cd "$(dirname "$0")/.."

status=0
for name in $(sed -n 's/(.*//; s/^.*:://p' plugin/imports.txt | tr -d '~' | sort -u); do
  case "$name" in
    MSTR | MTHREAD | MUTEX | MSTRM | MXML | NODE | ATTRIB | SREC | ENTITY | MSS | CREATEPARAMS | \
      MSSMODULE | MREFOBJREF | MMONOBJ | MSSINSTANCE | operator*) continue ;;
  esac
  grep -qw -- "$name" docs/embedding.md || {
    echo "docs/embedding.md leaves out $name" >&2
    status=1
  }
done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" --component epgbrowser >/dev/null
awk '/^```cpp/ { open = 1; next } /^```/ { open = 0 } open' docs/embedding.md >"$work/host.cc"
libraries=$(dirname "$(find "$work/prefix" -name liborvane.so)")
"$compiler" -std=c++20 -Wall -Wextra -Werror -I "$work/prefix/include/epgbrowser" "$work/host.cc" \
  -o "$work/host" -L "$libraries" -lorvane "-Wl,-rpath,$libraries" -pthread
printed=$(TZ=UTC "$work/host" "$libraries/epgbrowser.so" samples/week 2>/dev/null | wc -l)
if [ "$printed" -ne 5 ]; then
  echo "The host of docs/embedding.md prints $printed lines for five stations." >&2
  status=1
fi
exit $status
