#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite through CTest.
# Usage: scripts/test.sh [PRESET]   (dev, the default, or asan for the sanitizer build)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
preset="${1:-dev}"
scripts/install-deps.sh
cmake --preset "$preset" >/dev/null
cmake --build --preset "$preset"
ctest --preset "$preset" -j "$(nproc)"
