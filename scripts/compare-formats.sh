#!/bin/sh
# Loads the sample evening in each of the four listings formats, asks the same questions, and prints
# what all agree on and where they differ, with the reason. Fails when answers differ without a reason,
# or agree in spite of one.
#
#   scripts/compare-formats.sh [EPGSHELL]     (default: the release build's)
set -eu
cd "$(dirname "$0")/.."
shell=${1:-build/release/bin/epgshell}
formats="xmltv cache titantv radiotimes"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for format in $formats; do
  { echo "InitSchedule(\"\", \"\", \"samples/evening-$format\")"; cat samples/evening.script; } |
    "$shell" run - 2>"$work/log" | tail -n +2 >"$work/$format"
  if [ "$(wc -l <"$work/$format")" -ne "$(grep -c '^[A-Z]' samples/evening.script)" ]; then
    cat "$work/log" >&2
    exit 1
  fi
done

# One line a question: its reason or nothing, the question, and an answer a format.
awk '/^# differs: / { reason = substr($0, 12); next }
     /^[A-Z]/ { print reason "\t" $0; reason = "" }' samples/evening.script >"$work/questions"
(cd "$work" && paste questions $formats) | awk -F '\t' -v formats="$formats" '
  BEGIN { split(formats, name, " ") }
  {
    agree = $3 == $4 && $3 == $5 && $3 == $6
    if (agree) {
      printf "all agree  %s\n           %s\n", $2, $3
    } else {
      printf "they differ %s\n           (%s)\n", $2, $1
      for (i = 1; i <= 4; ++i) printf "           %-11s %s\n", name[i], $(i + 2)
    }
    if (agree == ($1 != "")) {
      print "           ^ not as the script says"
      wrong = 1
    }
  }
  END { exit wrong }'
