#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the benchmarks and writes docs/benchmarks.md and docs/benchmarks.svg. With arguments, which go to the
# benchmark program (--benchmark_min_time=0.001, say), writes both to build/benchmark instead.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh bench
cmake --preset benchmark >/dev/null
cmake --build build/benchmark --target benchmarks qmini
out=docs
[ $# -eq 0 ] || out=build/benchmark
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm # measures no disk, except for the jobs "on disk"
disk=$(findmnt -no FSTYPE -T build/benchmark)
options=(--benchmark_repetitions=5 --benchmark_report_aggregates_only=true --benchmark_min_time=0.1
    --benchmark_enable_random_interleaving=true --benchmark_out=results.json)
[ "$disk" != tmpfs ] || options+=(--benchmark_filter='-on disk')
(cd build/benchmark && benchmarks/benchmarks "${options[@]}" "$@")

report=(jq -r -f benchmarks/report.jq build/benchmark/results.json --arg output)
"${report[@]}" chart >build/benchmark/chart.tsv
gnuplot -c benchmarks/chart.gp build/benchmark/chart.tsv build/benchmark/chart.svg
tr -s '\n\t ' ' ' <build/benchmark/chart.svg >"$out/benchmarks.svg"

# Prints a table of whole processes that read and edit a file: qmini and other command-line editors.
compare_programs() (
    PATH=$PWD/build/benchmark/tools/qmini:$PATH
    folder=$(mktemp -d)
    trap 'rm -rf "$folder"' EXIT
    cd "$folder"
    first=1 # line of a table to print: the head only once
    for kib in 4 1024; do
        awk -v kib="$kib" 'BEGIN { for (s = 0; s < kib; s++) { print "[section" s "]"
            for (k = 0; k < 26; k++) printf "key%02d=the value that this key has\n", k } }' |
            tee "git-${kib}KiB.ini" "crudini-${kib}KiB.ini" >"qmini-${kib}KiB.ini"
        key="${kib}KiB.ini section$((kib - 1)) key25"
        for job in get set; do
            value=$([ $job = get ] || echo ' other')
            hyperfine -N --style none --warmup 2 --time-unit millisecond --export-markdown table \
                "qmini $job qmini-$key$value" "git config -f git-${key% *}.key25$value" \
                "crudini --$job crudini-$key$value" >/dev/null
            tail -n +$first table
            first=3
        done
    done
)

processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | uniq)
system=$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)
failed=0
{
    sed '/^## Results/q' docs/benchmarks.md
    printf '\nMeasured on %s processors (%s), %s, files in %s, on disk: %s.\n\n' \
        "$(nproc)" "${processor:-$(uname -m)}" "$system" "${TMPDIR:-/tmp}" "$disk"
    "${report[@]}" tables || failed=1
    printf '\n## qmini\n\nWhole processes, beside other command-line editors: means of hyperfine.\n\n'
    compare_programs
} >build/benchmark/report.md
mv build/benchmark/report.md "$out/benchmarks.md"
echo "bench: $out/benchmarks.md, $out/benchmarks.svg"
[ $# -gt 0 ] || exit $failed # a short run is too noisy to fail
