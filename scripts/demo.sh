#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the tool and the examples and shows each service of the library at work on real files. Fails when a
# command ends with another exit code than it should.
set -euo pipefail
cd "$(dirname "$0")/.."

fail() {
    echo "demo: $*" >&2
    exit 1
}

echo "demo: about a minute on a fresh machine; packages are installed unless NO_SETUP is set"
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build build/release --target qmini timing_tour frameloop

build=$PWD/build/release
export PATH=$build/tools/qmini:$build/examples/timing:$build/examples/frameloop:$PATH
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp tools/qmini/demo.ini "$folder/settings.ini"
cp examples/frameloop/frameloop.ini "$folder"
cd "$folder"

say() {
    printf '\n== %s\n' "$*"
}

# run CODE PROGRAM ARGUMENT...: shows a command with its output, and fails unless it ends with the exit code.
run() {
    local expected=$1 code=0
    shift
    printf '  $ %s\n' "${*@Q}" | sed "s/'\([A-Za-z0-9_.-]*\)'/\1/g"
    "$@" >output 2>&1 || code=$?
    sed 's/^/    /' output
    [ "$code" -eq "$expected" ] || fail "$1 ended with exit code $code, not $expected"
    [ "$code" -eq 0 ] || echo "    (exit code $code)"
}

say "INI files, with the editor qmini. A settings file as people write it:"
run 0 cat settings.ini
say "An edit changes one line of it, and nothing else:"
cp settings.ini before.ini
run 0 qmini set settings.ini Window width 1920
run 1 diff -u before.ini settings.ini
say "A key that is commented out gets its line below, here shown without being made:"
run 0 qmini set settings.ini General theme dark --dry-run
say "What is ambiguous is refused, with the line:"
run 3 qmini set settings.ini Rendering shaders /opt/shaders
say "A failure leaves the file as it was, here one that does not fit on the disk (a limit of 1 KiB):"
cp settings.ini before.ini
run 1 bash -c 'trap "" XFSZ; ulimit -f 1; qmini set settings.ini General text "$(printf %2000s x | tr " " x)"'
run 0 cmp before.ini settings.ini
say "For scripts:"
run 0 qmini get settings.ini Window width
run 0 qmini list settings.ini Window --json
say "What other programs may read differently:"
run 1 qmini check settings.ini

say "The timing classes, beside the clocks of the standard library:"
run 0 timing_tour

say "A frame loop, whose frame rate is limited to 25 while it runs:"
frameloop --seconds 5 frameloop.ini >frames 2>&1 &
until grep -qs 'FrameLimit 60' frames || ! kill -0 $! 2>/dev/null; do # it has read its settings, and draws
    sleep 0.2
done
run 0 qmini set frameloop.ini Frames FrameLimit 25
wait $! || fail "frameloop failed: $(tail -n 1 frames)"
say "Its last frame, and the statistics that it saved beside the edited setting:"
tail -n 16 frames | sed 's/\x1b\[[0-9]*[AK]//g; s/^/    /'
run 0 qmini list frameloop.ini
[[ $(<frames) == *"FrameLimit 25"* && $(<output) == *LongestFrame=* ]] ||
    fail "frameloop ignored its settings"
say "That was all. Each program explains itself with --help; frameloop is best seen in a terminal."
