#!/bin/sh
# Shows a plug-in's message box on a screen that is not shown, and closes it: the host program of
# docs/embedding.md, which does not replace the box, has to go on then. Under Wine, after
# scripts/test-windows.sh has built.
set -eu
cd "$(dirname "$0")/.."
bin=$PWD/build/windows/bin
awk '/^```cpp/ { open = 1; next } /^```/ { open = 0 } open' docs/embedding.md >build/windows/host.cc
x86_64-w64-mingw32-g++-posix -std=c++20 -I . build/windows/host.cc "$bin/orvane.dll" -o "$bin/host.exe"
cat >build/windows/show-box.sh <<'END'
scripts/wine.sh "$1/host.exe" "$1/epgbrowser.dll" no-such-listings &
host=$!
box=$(timeout 60 xdotool search --sync --onlyvisible --name '^Telvyn configuration error$' | head -n 1)
echo "the box: $(xdotool getwindowname "$box")"
# Until it is gone: a key may come before the box listens.
while xdotool search --name '^Telvyn configuration error$' >/dev/null 2>&1; do
  xdotool key --window "$box" Return 2>/dev/null || true
  sleep 0.2
done
wait "$host"
END
timeout 120 xvfb-run -a sh build/windows/show-box.sh "$bin"
echo "the host went on"
