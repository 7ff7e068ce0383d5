#!/bin/sh
# Makes the .zip for Windows and follows its README under Wine, unpacked into a folder with blanks in
# its name.
set -eu
cd "$(dirname "$0")/.."
scripts/setup.sh windows
cmake --preset windows >/dev/null
cmake --build --preset windows >/dev/null
rm -f build/windows/*.zip
(cd build/windows && cpack >cpack.log 2>&1) || { cat build/windows/cpack.log >&2; exit 1; }
package=$(ls "$PWD"/build/windows/*.zip)
ls -l "$package"

status=0
failed() {
  echo "$1" >&2
  status=1
}
wine=$PWD/scripts/wine.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
unzip -q "$package"
mv epgbrowser-* "a folder with blanks"
cd "a folder with blanks"
for document in README.md docs/*.md; do
  for link in $(grep -o '](\([^)# ]*\))' "$document" | sed 's/^](//; s/)$//' | grep -v ':'); do
    [ -e "$(dirname "$document")/$link" ] || failed "$document: $link is not there"
  done
done
grep '^    epgshell' README.md | sed 's/^ *//' >"$work/commands.cmd"
[ -s "$work/commands.cmd" ] || failed "README.md has no commands"
while read -r command; do
  printf '+ %s\n' "$command"
  printf '@%s\r\n' "$command" >"$work/command.cmd"
  "$wine" cmd /c "$work/command.cmd" </dev/null >"$work/out" 2>&1 || failed "this fails: $command"
done <"$work/commands.cmd"

# With another current folder.
cd /
listings=$(printf '%s/a folder with blanks/samples/week' "$work" | tr / '\\')
program="$work/a folder with blanks/epgshell.exe"
"$wine" "$program" guide "$listings" --at "2026-11-23 20:00" | grep -q 'Velvet Reel' ||
  failed "the guide does not show from another folder"
echo '<x/>' >"$work/none.xml"
document=$("$wine" "$program" guide "$work/none" 2>&1 | grep -o '[A-Z]:.*docs.listings.md' || true)
[ -n "$document" ] || failed "no message names listings.md"

# What is missing, or is not a library, is named.
cd "$work/a folder with blanks"
mv epgbrowser.dll epgbrowser.kept
said() {
  answer=$("$wine" "$program" guide samples/week 2>&1 >/dev/null) && failed "no error without $1"
  echo "$answer" | grep -q "$1" || failed "without $1 it says: $answer"
}
said epgbrowser.dll
cp README.md epgbrowser.dll
said epgbrowser.dll
mv epgbrowser.kept epgbrowser.dll
mv orvane.dll orvane.kept
said orvane.dll
echo "unpacked and tried under Wine"
exit $status
