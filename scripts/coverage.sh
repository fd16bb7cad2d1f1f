#!/usr/bin/env bash
# Sets the machine up, runs the tests counting the lines and branches that they take, and reports both for each
# source of the library. The branches of exceptions that the compiler adds to nearly every call are left out. The
# report is there to find what no test looks at; no figure in it is a goal. It also stands in
# build/coverage/report.html, with every line.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh coverage
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete # of earlier runs
ctest --preset coverage

report() {
    gcovr --root . --filter 'qmUtility/' --exclude-throw-branches \
        --exclude-unreachable-branches --object-directory build/coverage "$@"
}
report --html-details build/coverage/report.html --json build/coverage/report.json
echo "== lines"
report --add-tracefile build/coverage/report.json --txt
echo "== branches"
report --add-tracefile build/coverage/report.json --txt --branches
