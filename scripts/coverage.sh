#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, runs the tests and reports which lines and branches of the library they execute.
# Branches that the compiler adds for exceptions are left out. build/coverage/report.html shows every line.
set -euo pipefail
cd "$(dirname "$0")/.."

rm -rf build/coverage # with the counts of earlier runs, and of sources that are gone
scripts/test.sh coverage

gcovr --filter qmUtility/ --exclude-throw-branches --exclude-unreachable-branches \
    --html-details build/coverage/report.html --txt --print-summary build/coverage
