#!/bin/sh
# Makes the packages, two .deb and a .tar.gz, in build/release.
#
#   scripts/package.sh          makes them, and has lintian look at each .deb where it is installed
#   scripts/package.sh --check  and installs them into a clean root, as root with debootstrap, and
#                               makes listings and shows a guide there
set -eu
cd "$(dirname "$0")/.."
case "${1:-}" in
  "") scripts/setup.sh package ;;
  --check) scripts/setup.sh package-check ;;
  *) echo "usage: $0 [--check]" >&2; exit 2 ;;
esac

cmake --preset release -DEPG_TOOLS=ON >/dev/null
cmake --build --preset release >/dev/null
rm -f build/release/epg*.deb build/release/epg*.tar.gz
(cd build/release && umask 022 && cpack >cpack.log) || { cat build/release/cpack.log >&2; exit 1; }
packages=$(ls build/release/epgbrowser*.deb build/release/epgcache*.deb)
# shellcheck disable=SC2086  # a list of words, here and below
ls -l $packages build/release/epgbrowser*.tar.gz
if command -v lintian >/dev/null 2>&1; then
  lintian --fail-on error --profile debian --allow-root $packages
fi
[ "${1:-}" = --check ] || exit 0

if [ "$(id -u)" -ne 0 ]; then
  echo "Only root can make a clean root to install packages into." >&2
  exit 1
fi
root=$(mktemp -d)
trap 'umount "$root/proc" 2>/dev/null || true; rm -rf "$root"' EXIT
mirror=$(apt-get indextargets --format '$(SITE)' "Created-By: Packages" | sort | uniq -c | sort -rn |
  awk 'NR == 1 { print $2 }')
release=$(. /etc/os-release && echo "$VERSION_CODENAME")
debootstrap --variant=minbase "$release" "$root" "$mirror" >"$root.log" 2>&1 ||
  { tail -5 "$root.log" >&2; exit 1; }
rm -f "$root.log"
cp $packages "$root/tmp/"
# The loader finds the program's own folder through /proc.
mount -t proc proc "$root/proc"
chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
  $(for package in $packages; do echo "/tmp/$(basename "$package")"; done) >"$root/tmp/log" 2>&1 || { cat "$root/tmp/log" >&2; exit 1; }
echo "Installed into a clean root; from there:"
chroot "$root" env -i PATH=/usr/bin:/bin TZ=UTC sh -euc '
  epgcache /usr/share/doc/epgbrowser/examples/week.xml -o /tmp/week.xml
  epgcache --check /tmp/week.xml
  epgshell guide /tmp/week --at "2026-11-23 20:00"'
