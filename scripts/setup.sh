#!/usr/bin/env bash
# Installs the Debian packages that the build needs and that are missing here.
#
#   scripts/setup.sh [lint] [bench] [docs] [windows] [fuzz] [coverage]
#
# Without a word: what the library, its tests and its examples need. "lint" adds the checkers of scripts/lint.sh and of
# the binary interface, "bench" what the benchmarks, their peers and their report need, "docs" what
# makes the reference, "windows" the cross-compiler for Windows, and Wine to run what it builds, "fuzz" the compiler
# that makes the fuzzers, "coverage" the reporter of scripts/coverage.sh.
set -euo pipefail

packages=(build-essential cmake file git ninja-build pkg-config libgtest-dev libdtl-dev)
for group in "$@"; do
    case "$group" in
    lint) packages+=(clang-format clang-tidy cppcheck libclang-rt-14-dev abigail-tools) ;;
    bench) packages+=(gnuplot-nox jq libbenchmark-dev libsimpleini-dev libglib2.0-dev libinih-dev libboost-dev) ;;
    docs) packages+=(doxygen) ;;
    windows) packages+=(g++-mingw-w64-x86-64-posix wine wine64) ;;
    fuzz) packages+=(clang-14 libclang-rt-14-dev) ;;
    coverage) packages+=(gcovr) ;;
    *)
        echo "setup: unknown group '$group' (lint, bench, docs, windows, fuzz, coverage)" >&2
        exit 2
        ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all packages are installed"
    exit 0
fi

if ! command -v apt-get >/dev/null; then
    echo "setup: this is no Debian; install what these packages hold and run again: ${missing[*]}" >&2
    exit 1
fi
as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: these packages are missing and this is neither root nor is there sudo: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo)
fi
echo "setup: installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" \
    >/dev/null
echo "setup: done"
