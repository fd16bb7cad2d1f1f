#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing and checks every source with clang-format, clang-tidy and cppcheck, and for its
# licence; any finding is an error. "scripts/lint.sh fix" formats the sources instead.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh lint bench
mapfile -t sources < <(git ls-files --cached --others --exclude-standard --deduplicate '*.h' '*.cpp')

if [ "${1:-}" = fix ]; then
    clang-format -i "${sources[@]}"
    exit
fi

echo "== licence"
if git grep --untracked -L 'SPDX-License-Identifier: MIT' -- \
    '*.h' '*.cpp' '*CMakeLists.txt' '*.cmake' '*.sh' '*.awk' '*.bash' '*.gp' '*.in' '*.jq' '*.map'; then
    echo "lint: these files have no \"SPDX-License-Identifier: MIT\"" >&2
    exit 1
fi

echo "== clang-format"
clang-format --dry-run --Werror "${sources[@]}"

echo "== clang-tidy"
cmake --preset lint >/dev/null
cmake --build build/lint --target document_sources >/dev/null # generated sources of the tests
run-clang-tidy -quiet -p build/lint "^$PWD/(?!build/)" 2>/dev/null >build/lint/clang-tidy.log ||
    { grep -v '^clang-tidy' build/lint/clang-tidy.log; exit 1; }

echo "== cppcheck"
cppcheck --project=build/lint/compile_commands.json -i"$PWD/build" --library=googletest --inline-suppr \
    --enable=warning,performance,portability --suppressions-list=.cppcheck-suppressions \
    --error-exitcode=1 --quiet -j "$(nproc)"
echo "lint: no findings"
