#!/bin/sh
# Runs the examples of docs/scripting.md and docs/listings.md and fails where they are not true.
#
#   scripts/check-docs.sh [EPGSHELL]   the program (default: that of the release build)
set -eu
cd "$(dirname "$0")/.."
shell=${1:-build/release/bin/epgshell}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export TZ=UTC

# Every fenced block becomes a file, numbered, named after its kind; a failing one's text is kept.
split() {
  awk -v folder="$work" '
    /^```/ && open { close(file); open = 0; next }
    /^```(script|answers|xml)/ {
      open = 1; kind = substr($1, 4); file = sprintf("%s/%03d.%s", folder, ++count, kind)
      if ($2 == "fails:") { reason = $0; sub(/^.*fails: /, "", reason); print reason > (file ".fails") }
      next
    }
    /^```/ { open = 1; file = "/dev/null"; next }
    open { print > file }' "$1"
}

status=0
failed() {
  echo "$1: $2" >&2
  status=1
}

split docs/scripting.md
examples=0
for script in "$work"/*.script; do
  number=$(basename "$script" .script | sed 's/^0*//')
  answers=$(printf '%s/%03d.answers' "$work" $((number + 1)))
  grep -q InitSchedule "$script" || {
    printf 'InitSchedule("", "", "samples/week")\nGetStationCount()\n' | cat - "$script" >"$script.whole"
    printf 'ok\n5\n' | cat - "$answers" >"$answers.whole"
    mv "$script.whole" "$script"
    mv "$answers.whole" "$answers"
  }
  "$shell" run "$script" >"$work/out" 2>/dev/null || true
  diff -u "$answers" "$work/out" >&2 || failed docs/scripting.md "an example answers otherwise"
  examples=$((examples + 1))
done

rm -f "$work"/*
split docs/listings.md
for listings in "$work"/*.xml; do
  printf 'InitSchedule("", "", "%s")\nGetStationCount()\nGetEndTime()\n' "${listings%.xml}" |
    "$shell" run - >"$work/out" 2>"$work/log" || true
  if [ -e "$listings.fails" ]; then
    grep -qF "$(cat "$listings.fails" | sed 's/</\&lt;/g; s/>/\&gt;/g')" "$work/log" ||
      failed docs/listings.md "a file fails otherwise: $(cat "$work/log")"
  elif [ "$(sed -n 2p "$work/out")" != 1 ] || [ "$(sed -n 3p "$work/out")" = 0 ]; then
    failed docs/listings.md "a file does not load: $(cat "$work/log")"
  fi
  examples=$((examples + 1))
done
[ "$examples" -ge 15 ] || failed docs "only $examples examples found"
exit $status
