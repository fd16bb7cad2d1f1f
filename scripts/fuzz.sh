#!/usr/bin/env bash
# Sets the machine up, builds the fuzzers, replays their corpus, and fuzzes for so many seconds in all, which the
# fuzzers share. What is found on the way is kept in build/fuzz/corpus for the next run. A crash, a timeout, a leak
# or a disagreement ends the script, and leaves the input in build/fuzz/findings.
#
#   scripts/fuzz.sh SECONDS
set -euo pipefail
cd "$(dirname "$0")/.."

fuzzers=(grammar operations print)
case "${1:-}" in
'' | *[!0-9]*)
    echo "usage: scripts/fuzz.sh SECONDS" >&2
    exit 2
    ;;
esac
each=$((10#$1 / ${#fuzzers[@]}))

scripts/setup.sh fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
mkdir -p build/fuzz/findings

# run NAME ARGUMENT...: runs a fuzzer and prints how many inputs it has executed.
run() {
    local fuzzer=$1 log=build/fuzz/$1.log
    shift
    if ! "build/fuzz/tests/fuzz/fuzz_$fuzzer" -timeout=10 -print_final_stats=1 -artifact_prefix=build/fuzz/findings/ \
        "$@" >"$log" 2>&1; then
        tail -n 40 "$log"
        echo "fuzz: $fuzzer failed; to see it again: build/fuzz/tests/fuzz/fuzz_$fuzzer build/fuzz/findings/..." >&2
        exit 1
    fi
    awk -v name="$fuzzer" '/^stat::number_of_executed_units/ { printf "fuzz: %-12s %9d inputs\n", name, $2 }' "$log"
}

for fuzzer in "${fuzzers[@]}"; do
    mkdir -p "build/fuzz/corpus/$fuzzer"
    corpora=("build/fuzz/corpus/$fuzzer" "tests/fuzz/corpus/$fuzzer")
    if [ "$each" -eq 0 ]; then
        run "$fuzzer" -runs=0 "${corpora[@]}" # the corpus only
    else
        run "$fuzzer" -max_total_time="$each" "${corpora[@]}"
    fi
done
