#!/bin/sh
# Fails when a folder includes what does not stand below it: includes run one way through the tree.
set -eu
cd "$(dirname "$0")/.."

# Folder, then the folders that it may include beside itself.
allowed() {
  case "$1" in
    host | platform) echo "" ;;
    xml) echo "host" ;;
    schedule) echo "host platform" ;;
    import) echo "schedule xml host platform" ;;
    browser) echo "import schedule host platform" ;;
    plugin) echo "browser import schedule xml host platform" ;;
    app) echo "host" ;;
    tools) echo "import schedule xml host platform" ;;
  esac
}

status=0
for folder in host platform xml schedule import browser plugin app tools; do
  pattern="$folder"
  for other in $(allowed "$folder"); do pattern="$pattern|$other"; done
  # The progress indicator includes nothing of ours, so that the importers may report to it.
  if grep -nE '^#include "' $(scripts/sources.sh "$folder") |
    grep -vE "#include \"($pattern)/" |
    grep -vE '^import/[^:]*:[0-9]+:#include "browser/progress_indicator.h"'; then
    echo "$folder/ may include only: $folder $(allowed "$folder")" >&2
    status=1
  fi
done
exit $status
