#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs missing packages (not if NO_SETUP is set), then builds the library and runs every test with each
# preset that is named: release (the default, with asan-ubsan), asan-ubsan, tsan, clang-libcxx, aarch64 (under
# QEMU), or windows (under Wine).
#
#   scripts/test.sh [PRESET...]
set -euo pipefail
cd "$(dirname "$0")/.."

[ $# -gt 0 ] || set -- release asan-ubsan
for preset in "$@"; do
    echo "== $preset"
    scripts/setup.sh "$preset"
    # Creates Wine's prefix, which takes longer than a test may.
    [ "$preset" != windows ] || timeout 300 scripts/wine.sh cmd /c ver
    cmake --preset "$preset"
    cmake --build "build/$preset"
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=error --timeout 300 -j 2
done
