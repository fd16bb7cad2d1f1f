#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, then builds the library and runs every test with each preset that is named: release (the
# default, with asan-ubsan), asan-ubsan, tsan, debug, clang-libcxx, aarch64 (under QEMU), or windows (under Wine).
#
#   scripts/test.sh [PRESET...]
set -euo pipefail
cd "$(dirname "$0")/.."

[ $# -gt 0 ] || set -- release asan-ubsan
scripts/setup.sh
for preset in "$@"; do
    echo "== $preset"
    case "$preset" in
    release | clang-libcxx | aarch64) scripts/setup.sh "$preset" ;;
    windows)
        scripts/setup.sh windows
        timeout 300 scripts/wine.sh cmd /c ver # creates the prefix, which takes longer than a test may
        ;;
    esac
    cmake --workflow --preset "$preset"
done
