#!/usr/bin/env bash
# Sets the machine up and runs the checkers over every source: formatting, clang-tidy, cppcheck. No finding is
# allowed. "scripts/lint.sh fix" formats the sources instead.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh lint bench
sources=$(git ls-files --cached --others --exclude-standard '*.h' '*.cpp')
mapfile -t sources <<<"$sources"

if [ "${1:-}" = fix ]; then
    clang-format -i "${sources[@]}"
    exit
fi

echo "== clang-format"
clang-format --dry-run --Werror "${sources[@]}"

echo "== clang-tidy"
cmake --preset lint >/dev/null
cmake --build build/lint --target document_sources >/dev/null # which the checkers want to be there
run-clang-tidy -quiet -p build/lint "^$PWD/(?!build/)" 2>/dev/null >build/lint/clang-tidy.log ||
    { grep -v '^clang-tidy' build/lint/clang-tidy.log; exit 1; }

echo "== cppcheck"
cppcheck --project=build/lint/compile_commands.json -i"$PWD/build" --library=googletest --inline-suppr --quiet \
    --enable=warning,performance,portability --suppressions-list=.cppcheck-suppressions --error-exitcode=1 \
    -j "$(nproc)"
echo "lint: no findings"
