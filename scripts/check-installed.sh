#!/bin/sh
# Follows what the installed packages tell their user: fails where a link of their documents leads
# nowhere, a command of their README fails, or a message names a document that is not there.
set -eu
cd /usr/share/doc/epgbrowser
status=0
failed() {
  echo "$1" >&2
  status=1
}

for document in README.md docs/*.md; do
  for link in $(grep -o '](\([^)# ]*\))' "$document" | sed 's/^](//; s/)$//' | grep -v ':'); do
    [ -e "$(dirname "$document")/$link" ] || failed "$document: $link is not there"
  done
  ! grep -n 'scripts/\|build/' "$document" || failed "$document speaks of the source tree"
done

grep '^    epg' README.md | sed 's/^    //' >/tmp/commands
[ -s /tmp/commands ] || failed "README.md has no commands"
while read -r command; do
  echo "+ $command"
  sh -c "$command" </dev/null >/tmp/out 2>&1 || failed "README.md: this command fails: $command"
done </tmp/commands

epgcache samples/week.xml -o /tmp/week.xml || failed "epgcache fails"
epgcache --check /tmp/week.xml || failed "epgcache --check fails"
epgshell guide /tmp/week --at "2026-11-23 20:00" >/dev/null || failed "made listings do not show"

# Messages that name a document.
echo '<x/>' >/tmp/none.xml
printf 'GetNothing()\n' >/tmp/none.script
for command in "guide /tmp/none" "run /tmp/none.script"; do
  # shellcheck disable=SC2086  # two words
  named=$(epgshell $command 2>&1 | grep -o '[^ ]*\.md' || true)
  [ -n "$named" ] && [ -e "$named" ] || failed "epgshell $command names the document '$named'"
done
exit $status
