#!/usr/bin/env bash
# Installs what is missing, then builds the library and runs every test with each preset that is named: release (the
# default, with asan-ubsan), asan-ubsan, tsan, debug, or windows (under Wine).
#
#   scripts/test.sh [PRESET...]
set -euo pipefail
cd "$(dirname "$0")/.."

[ $# -gt 0 ] || set -- release asan-ubsan
scripts/setup.sh
for preset in "$@"; do
    echo "== $preset"
    if [ "$preset" = windows ]; then
        scripts/setup.sh windows
        timeout 300 scripts/wine.sh cmd /c ver # creates the prefix, which takes longer than a test may
    fi
    cmake --workflow --preset "$preset"
done
