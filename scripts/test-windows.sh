#!/usr/bin/env bash
# Sets the machine up, builds the library for Windows, and runs there, under Wine, every test that is not for Linux
# alone.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh windows
echo "== windows"
timeout 300 scripts/wine.sh cmd /c ver # makes the prefix, for which the tests would not wait
cmake --preset windows >/dev/null
cmake --build --preset windows
ctest --preset windows
