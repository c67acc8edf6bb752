#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs the parser fuzzer from the committed seed corpus.
# Usage: scripts/fuzz.sh [SECONDS]   (default 60)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds="${1:-60}"

scripts/install-deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target parse_fuzzer

# New inputs go to a scratch folder; the committed seeds are only read.
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
mkdir -p build/fuzz/artifacts
build/fuzz/fuzz/parse_fuzzer -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    -dict=fuzz/itunesdb.dict -artifact_prefix=build/fuzz/artifacts/ "$work" fuzz/corpus/parser
