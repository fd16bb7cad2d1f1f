#!/usr/bin/env bash
# Sets the machine up, builds the library and runs every test: optimised first, then under the address and
# undefined-behaviour sanitizers. Names of presets as arguments run those instead (scripts/test.sh tsan).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
presets=("$@")
[ $# -gt 0 ] || presets=(release asan-ubsan)
for preset in "${presets[@]}"; do
    echo "== $preset"
    cmake --preset "$preset" >/dev/null
    cmake --build --preset "$preset"
    ctest --preset "$preset"
done
