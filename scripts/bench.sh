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

processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | uniq)
system=$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)
failed=0
{
    sed '/^## Results/q' docs/benchmarks.md
    printf '\nMeasured on %s processors (%s), %s, files in %s, on disk: %s.\n\n' \
        "$(nproc)" "${processor:-$(uname -m)}" "$system" "${TMPDIR:-/tmp}" "$disk"
    "${report[@]}" tables || failed=1
    printf '\n## qmini\n\nWhole processes, beside other command-line editors, measured with hyperfine.\n\n'
    benchmarks/qmini.sh build/benchmark/tools/qmini/qmini
} >build/benchmark/report.md
mv build/benchmark/report.md "$out/benchmarks.md"
echo "bench: $out/benchmarks.md, $out/benchmarks.svg"
[ $# -gt 0 ] || exit $failed # a short run is too noisy to fail
