#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each from its committed seed corpus.
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]   (default: 60 seconds, every target)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
seconds="${1:-60}"
shift || true
targets=("$@")
((${#targets[@]})) || targets=(parse_fuzzer export_fuzzer artwork_fuzzer)

scripts/install-deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target "${targets[@]}"

mkdir -p build/fuzz/artifacts
for target in "${targets[@]}"; do
    seeds="fuzz/corpus/${target%_fuzzer}"
    dictionary=()
    [[ "$target" == parse_fuzzer ]] && dictionary=(-dict=fuzz/itunesdb.dict)
    # New inputs go to a scratch folder; the committed seeds are only read.
    work="$(mktemp -d)"
    echo "== $target for ${seconds}s"
    build/fuzz/fuzz/"$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
        "${dictionary[@]}" -artifact_prefix=build/fuzz/artifacts/ "$work" "$seeds" 2>&1 | tail -n 12
    rm -rf "$work"
done
