#!/usr/bin/env bash
# Sets the machine up, runs the benchmarks, beside the peers of which Debian has packages, and writes what comes out to
# docs/benchmarks.md and docs/benchmarks.svg. With arguments, which go to the benchmark programs
# (--benchmark_filter=..., say), both are written to build/benchmark instead.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh bench
cmake --preset benchmark >/dev/null
cmake --build --preset benchmark
results=build/benchmark/results
mkdir -p "$results"
out=docs
[ $# -eq 0 ] || out=build/benchmark
load=$(cut -d' ' -f1 /proc/loadavg)

# Where there is a file system in memory the files lie there, so that no disk is measured.
files="on disk"
if [ -d /dev/shm ]; then
    export TMPDIR=/dev/shm
    files="in memory"
fi
for program in bench_ini bench_timing bench_filecheck; do
    name=$results/$(basename "$program")
    "build/benchmark/benchmarks/$program" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true \
        --benchmark_enable_random_interleaving=true --benchmark_min_time=0.1 \
        --benchmark_out="$name.csv" --benchmark_out_format=csv "$@" | tee "$name.txt"
done

# table PROGRAM: the tables that it has printed, and the lines below them.
table() {
    sed -n '/^|/,$p' "$results/$1.txt"
}
processor=$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | uniq)
system=$(sed -n 's/^PRETTY_NAME="\(.*\)"/\1/p' /etc/os-release)
compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' build/benchmark/CMakeCache.txt)
cat >"$out/benchmarks.md" <<END
# What takes how long

![Duration of INI operations beside other libraries](benchmarks.svg)

Made by \`scripts/bench.sh\`: medians of five runs in one process, on $(nproc) processors (${processor:-$(uname -m)}),
$system, $("$compiler" -dumpfullversion | sed "s|^|$(basename "$compiler") |"), files $files. The
load average at the start was $load. Ratios carry over to other machines better than times do; they move by some five
percent from run to run on a machine that does nothing else.

## INI files

\`get\` looks up the last key of a file with comments, \`load\` takes all keys of a file into a list, \`set\` changes a
value and writes the file back, one flush a record included. The limit is what cannot be done without: reading the file
once and finding every line end; for \`set\`, a write of the system for each record, which the peers do not make.

$(table bench_ini)

## Time and frame rates

$(table bench_timing)

## File changes

$(table bench_filecheck)
END
table bench_timing | cat - "$results/bench_filecheck.txt" |
    awk -f benchmarks/Chart.awk "$results/bench_ini.csv" - >"$out/benchmarks.svg"
echo "bench: $out/benchmarks.md, $out/benchmarks.svg"
