#!/bin/sh
# Builds for Windows and tests what was built under Wine: the test programs, the console program
# beside the POSIX one, the documents' examples, and the message box on a screen.
#
# Needs the release build; scripts/test.sh --windows makes it first.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh windows
echo "== windows"
cmake --preset windows -DEPG_TESTS=ON >/dev/null
cmake --build --preset windows

export WINEPREFIX="$PWD/build/wine" WINEDEBUG=-all
mkdir -p "$WINEPREFIX"
# One server for all, which does not end between two programs and let the next one down.
wineserver -k || true
wineserver -p
trap 'wineserver -k' EXIT
timeout 300 scripts/wine.sh wineboot
ctest --preset windows -j "$(nproc)"

module=build/windows/bin/epgbrowser.dll
scripts/check-exports.sh "$module"
scripts/check-imports.sh "$PWD/$module"

echo "== the console program for Windows"
shell="$PWD/scripts/wine.sh $PWD/build/windows/bin/epgshell.exe"
# Without what a POSIX system says in its own words, and pseudo terminals.
EPG_SHELL="$shell" build/release/bin/epgshell_test --gtest_brief=1 \
  --gtest_filter='-*.SaysWhatTheSystemSays:*.NothingSteersATerminal'
work=$(mktemp -d)
trap 'wineserver -k; rm -rf "$work"' EXIT
printf '#!/bin/sh\nexec %s "$@"\n' "$shell" >"$work/epgshell"
chmod +x "$work/epgshell"
scripts/check-docs.sh "$work/epgshell"
for zone in UTC America/New_York Asia/Kolkata Australia/Adelaide; do
  for program in build/release/bin/epgshell "$work/epgshell"; do
    TZ=$zone scripts/compare-formats.sh "$program"
    # But for the present time.
    TZ=$zone "$program" run samples/tour.script 2>/dev/null | sed 8d
  done >"$work/both"
  half=$(($(wc -l <"$work/both") / 2))
  head -n "$half" "$work/both" >"$work/posix"
  tail -n "+$((half + 1))" "$work/both" | diff "$work/posix" - >&2
done
scripts/compare-systems.py build/release/bin/epgshell "$shell" --scripts 500
scripts/check-box.sh
scripts/package.sh --windows
