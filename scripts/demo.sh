#!/usr/bin/env bash
# Installs what is missing, builds Kestrune, and converts a fresh copy of the demo iPod in build/demo-ipod.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release

cli=build/release/src/cli/kestrune-cli
demo=build/demo-ipod
rm -rf "$demo"
cp -a examples/demo-ipod "$demo" # the checked-in tree stays as it is

step() { printf '\n$ %s\n' "$*"; "$@"; }
step "$cli" playlists "$demo"
step "$cli" convert "$demo"
step "$cli" files "$demo/Playlists"
step cat "$demo/Playlists/Road Trip.m3u8"
step "$cli" art "$demo"
printf '\nThe converted demo iPod is in %s; try "%s --help" for more.\n' "$demo" "$cli"
printf 'The window: build/release/src/ui/kestrune, then "Open iPod / Backup Folder..." and pick %s.\n' "$demo"
