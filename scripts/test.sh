#!/usr/bin/env bash
# Installs what is missing, builds the dev preset and runs the whole test suite through CTest.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
scripts/install-deps.sh
cmake --preset dev >/dev/null
cmake --build --preset dev
ctest --preset dev -j "$(nproc)"
