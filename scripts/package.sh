#!/bin/sh
# Makes the packages, two .deb and a .tar.gz, in build/release.
#
#   scripts/package.sh          makes them, and has lintian look at each .deb where it is installed
#   scripts/package.sh --windows  makes a .zip for Windows, in build/windows, and tries it under Wine
#   scripts/package.sh --check  and installs them into a clean root that holds nothing but them and
#                               what they depend on, as root with debootstrap, and follows their
#                               README there
set -eu
cd "$(dirname "$0")/.."
case "${1:-}" in
  "") scripts/setup.sh package ;;
  --check) scripts/setup.sh package-check ;;
  --windows) exec scripts/package-windows.sh ;;
  *) echo "usage: $0 [--check | --windows]" >&2; exit 2 ;;
esac

cmake --preset release -DEPG_TOOLS=ON >/dev/null
cmake --build --preset release >/dev/null
rm -f build/release/epg*.deb build/release/epg*.tar.gz
(cd build/release && umask 022 && cpack >cpack.log 2>&1) ||
  { cat build/release/cpack.log >&2; exit 1; }
packages=$(ls build/release/epgbrowser*.deb build/release/epgcache*.deb)

# The packaging tool goes on without a word where it could not work out a package's libraries.
depends_on() {
  dpkg-deb -f "$1" Depends | tr ',' '\n' | grep -q "^ *$2" || {
    echo "$1 does not depend on $2; the packaging tool has said:" >&2
    cat build/release/cpack.log >&2
    exit 1
  }
}
for library in libc6 libstdc++6; do
  for package in $packages; do depends_on "$package" "$library"; done
done
for library in epgbrowser libarchive libicu libxml2; do depends_on build/release/epgcache*.deb "$library"; done

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
# Their dependencies by name, the first of alternatives.
needed=$(for package in $packages; do dpkg-deb -f "$package" Depends; done | tr ',' '\n' |
  sed 's/|.*//; s/(.*//; s/ //g' | grep -v '^epgbrowser$' | sort -u | paste -sd,)
# Without apt there is nothing in the root that needs the C++ library, say, but the packages.
debootstrap --variant=minbase --exclude=apt "--include=$needed" "$release" "$root" "$mirror" \
  >"$root.log" 2>&1 || { tail -5 "$root.log" >&2; exit 1; }
rm -f "$root.log"
cp $packages "$root/tmp/"
# The loader finds the program's own folder through /proc.
mount -t proc proc "$root/proc"
chroot "$root" sh -c 'dpkg -i /tmp/*.deb' >"$root/tmp/log" 2>&1 ||
  { cat "$root/tmp/log" >&2; exit 1; }
echo "Installed into a clean root; from there:"
cp scripts/check-installed.sh "$root/tmp/"
chroot "$root" env -i PATH=/usr/bin:/bin TZ=UTC sh /tmp/check-installed.sh
