#!/bin/sh
# Fails when a C++ file is not formatted as .clang-format says; `--fix` formats it.
set -eu
cd "$(dirname "$0")/.."
echo "== formatting"
if [ "${1:-}" = --fix ]; then
  scripts/sources.sh | xargs clang-format -i
else
  scripts/sources.sh | xargs clang-format --dry-run --Werror
fi
