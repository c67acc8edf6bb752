#!/usr/bin/env bash
# Builds the optimised preset and prints every benchmark figure beside its target (see BENCHMARKS.md).
# Usage: scripts/bench.sh [kestrune-bench options]   e.g. --tracks 10000 --playlists 100 --runs 3
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target kestrune-bench
build/release/bench/kestrune-bench "$@"
# The covers against libgpod's own writing and decoding of the artwork database, where it is installed.
if cmake --build --preset release --target kestrune-gpod-covers >/dev/null 2>&1; then
    build/release/bench/kestrune-gpod-covers
fi
