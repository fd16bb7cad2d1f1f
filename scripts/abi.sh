#!/usr/bin/env bash
# Guards the binary interface: what programs that are built already rely on. tests/abi has it on record, as a list of
# the symbols that the libraries show, and as a description of the types behind those of qmUtility.
#
#   scripts/abi.sh symbols BUILD      compares the symbols of the libraries in a build folder with the list
#   scripts/abi.sh types BUILD        compares the types, of a build with debug information
#   scripts/abi.sh record             builds, and records anew what there is now
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
record=$root/tests/abi

symbols() {
    local library
    for library in "$1"/libqmUtility.so "$1"/platform/libqmPlatform.so "$1"/host/libqm{CommonBase,Console,SystemInfo}.so
    do
        echo "== $(basename "$library")"
        nm -DC --defined-only "$library" | cut -c20- | LC_ALL=C sort -u
    done | sed -E 's/__cxx11::(basic_string<(char|wchar_t)), std::char_traits<\2>, std::allocator<\2> >/\1>/g'
}

case "${1:-}" in
symbols)
    symbols "$2" | diff -u --label recorded --label built "$record/symbols.txt" -
    ;;
types)
    former=$(mktemp --suffix=.abi)
    trap 'rm -f "$former"' EXIT
    gzip -dc "$record/qmUtility.abi.gz" >"$former"
    abidiff --no-show-locs "$former" "$2/libqmUtility.so"
    ;;
record)
    cd "$root"
    scripts/setup.sh lint
    cmake --preset debug >/dev/null
    cmake --build --preset debug --target qmUtility
    symbols build/debug >"$record/symbols.txt"
    abidw --drop-undefined-syms --exported-interfaces-only --no-show-locs \
        --no-corpus-path --no-comp-dir-path --no-elf-needed --no-parameter-names --no-write-default-sizes \
        build/debug/libqmUtility.so | gzip -9n >"$record/qmUtility.abi.gz"
    ;;
*)
    sed -n '2,/^set/s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac
