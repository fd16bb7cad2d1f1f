#!/usr/bin/env bash
# Sets the machine up and runs the benchmarks, beside the peers of which Debian has packages. Prints a table of
# ratios. Arguments go to the benchmark programs (--benchmark_filter=..., say).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh bench
cmake --preset benchmark >/dev/null
cmake --build --preset benchmark
# Where there is a file system in memory the files lie there, so that no disk is measured.
[ ! -d /dev/shm ] || export TMPDIR=/dev/shm
for program in bench_ini timing/bench_timing filecheck/bench_filecheck; do
    "build/benchmark/benchmarks/$program" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 "$@"
done
