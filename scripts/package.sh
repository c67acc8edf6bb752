#!/usr/bin/env bash
# Builds the Debian package and proves it: validates the desktop entry and the AppStream metainfo, installs
# the package with apt, converts a copy of the demo iPod with the installed kestrune-cli, runs the
# installed kestrune's self-check, then removes the package again.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-deps.sh

desktop-file-validate packaging/linux/org.kestrune.Kestrune.desktop
appstreamcli validate --no-net packaging/linux/org.kestrune.Kestrune.metainfo.xml

cmake --preset release >/dev/null
cmake --build --preset release
(cd build/release && cpack -G DEB >/dev/null)
deb="$(ls build/release/kestrune_*.deb)"
echo "== $deb"
dpkg-deb --info "$deb" | grep -E '^ (Package|Version|Depends):'

sudo=()
[[ "$(id -u)" == 0 ]] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get install -y -qq "./$deb" >/dev/null
trap '"${sudo[@]}" apt-get remove -y -qq kestrune >/dev/null' EXIT

demo="$(mktemp -d)"
cp -a examples/demo-ipod/. "$demo"
/usr/bin/kestrune-cli --version
/usr/bin/kestrune-cli convert "$demo"
test -f "$demo/Playlists/Road Trip.m3u8"
/usr/bin/kestrune-cli art "$demo"
test -f "$demo/.rockbox/albumart/The Lanterns-Open Roads.jpg"
/usr/bin/kestrune --test
rm -rf "$demo"
echo "The package installs and runs."
