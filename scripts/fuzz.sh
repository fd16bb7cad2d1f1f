#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds the fuzzers, replays their corpus, and fuzzes for the given time, which the
# fuzzers share; with 0 it only replays. New inputs go to build/fuzz/corpus. A crash, a timeout, a leak or a
# disagreement ends the script and leaves the input in build/fuzz/findings.
#
#   scripts/fuzz.sh SECONDS
set -euo pipefail
cd "$(dirname "$0")/.."

fuzzers=(operations print)
if ! [[ ${1:-} =~ ^[0-9]+$ ]]; then
    echo "usage: scripts/fuzz.sh SECONDS" >&2
    exit 2
fi
each=$((10#$1 / ${#fuzzers[@]}))
limit=-max_total_time=$each
[ "$each" -gt 0 ] || limit=-runs=0

scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build build/fuzz
mkdir -p build/fuzz/findings
for fuzzer in "${fuzzers[@]}"; do
    program=build/fuzz/tests/fuzz/fuzz_$fuzzer
    log=build/fuzz/$fuzzer.log
    mkdir -p "build/fuzz/corpus/$fuzzer"
    if ! "$program" "$limit" -timeout=10 -print_final_stats=1 -artifact_prefix=build/fuzz/findings/ \
        "build/fuzz/corpus/$fuzzer" "tests/fuzz/corpus/$fuzzer" >"$log" 2>&1; then
        tail -n 40 "$log"
        echo "fuzz: $fuzzer failed; to reproduce: $program build/fuzz/findings/..." >&2
        exit 1
    fi
    echo "fuzz: $fuzzer: $(sed -n 's/^stat::number_of_executed_units: *//p' "$log") inputs"
done
