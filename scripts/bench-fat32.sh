#!/usr/bin/env bash
# One figure on a real, slow device: kestrune-cli converting 1,000 playlists (replacing the files of an
# earlier run) onto a FAT32 volume in a user-mode Linux guest, every I/O of which waits behind a
# device-mapper delay, as a USB 2.0 hard disk makes it wait. Prints the figure beside its target.
# Usage: scripts/bench-fat32.sh [BASELINE_CLI]
#   BASELINE_CLI, a kestrune-cli built from an earlier commit, is measured the same way for comparison.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --target kestrune-cli kestrune-bench >/dev/null
library=$(build/release/bench/kestrune-bench --tracks 10000 --playlists 1000 --print-library)

# Seconds one CLI takes for the second of two runs, the first made before the device is slowed.
measure() {
    local job
    job=$(mktemp -d "${TMPDIR:-/tmp}/kestrune-bench-XXXXXX")
    mkdir -p "$job/tree/iPod_Control/iTunes" && cp "$library" "$job/tree/iPod_Control/iTunes/iTunesDB"
    cat >"$job/scenario.sh" <<SCENARIO
populate "\$JOB/tree"
run first "$1" convert "\$IPOD" --no-clean
slow_device 2
start=\$(date +%s%N)
run cli "$1" convert "\$IPOD" --no-clean
echo "seconds \$(( (\$(date +%s%N) - start) / 1000000 ))"
SCENARIO
    local status=0
    tests/fat32/uml-run.sh "$job" 256 >/dev/null || status=$?
    if [ "$status" = 77 ]; then
        echo "skipped: the user-mode kernel cannot start here" >&2
        rm -rf "$job"
        exit 0
    fi
    [ "$status" = 0 ] && [ "$(cat "$job/cli.status")" = 0 ] || { echo "the run failed: see $job" >&2; exit 1; }
    awk '/^seconds/ { printf "%.1f\n", $2 / 1000 }' "$job/scenario.out"
    rm -rf "$job"
}

now=$(measure "$PWD/build/release/src/cli/kestrune-cli")
# Measured with the build before durable writes (commit 125570d) on the machine of BENCHMARKS.md.
before=${1:+$(measure "$(realpath "$1")")}
before=${before:-5.2}
verdict=$(awk -v a="$now" -v b="$before" 'BEGIN { print (a <= 2 * b) ? "meets" : "MISSES" }')
printf '%-46s %-34s %-30s %s\n' "1,000 playlists onto a slow FAT32 device" "$now s" "<= 2 x $before s (before)" "$verdict"
