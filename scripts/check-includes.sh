#!/bin/sh
# Fails when a folder includes what does not stand below it: includes run one way through the tree.
set -eu
cd "$(dirname "$0")/.."

# Folder, then the folders that it may include beside itself.
allowed() {
  case "$1" in
    text) echo "" ;;
    host | platform) echo "text" ;;
    schedule) echo "host platform text" ;;
    xml) echo "host text" ;;
    import) echo "schedule xml host platform text" ;;
    browser) echo "import schedule host platform text" ;;
    plugin) echo "browser import schedule xml host platform text" ;;
    app) echo "host text" ;;
    tools) echo "import schedule xml host platform text" ;;
  esac
}

status=0
# Of the engine, a guest sees what an engine gives its guests, and a program what it gives programs.
guests=$(scripts/sources.sh platform xml schedule import browser plugin)
if grep -nE '^#include "host/(engine.h|internal/)' $guests ||
  grep -nE '^#include "host/internal/' $(scripts/sources.sh app tools tests bench fuzz) $guests; then
  echo "host/internal/ is the engine's own, host/engine.h the host program's" >&2
  status=1
fi
for folder in text host platform xml schedule import browser plugin app tools; do
  pattern="$folder"
  for other in $(allowed "$folder"); do pattern="$pattern|$other"; done
  if grep -nE '^#include "' $(scripts/sources.sh "$folder") | grep -vE "#include \"($pattern)/"; then
    echo "$folder/ may include only: $folder $(allowed "$folder")" >&2
    status=1
  fi
done
exit $status
