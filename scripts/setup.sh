#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the Debian packages that are missing, unless NO_SETUP is set.
#
#   scripts/setup.sh [GROUP...]
#
# Without a group: what the library, its tests, the examples and the tool need. The groups add what the script
# or the preset of the same name needs.
set -euo pipefail

packages=(build-essential cmake file git ninja-build pkg-config libgtest-dev)
for group in "$@"; do
    case "$group" in
    asan-ubsan | tsan) ;;
    lint) packages+=(clang-format clang-tidy cppcheck libclang-rt-14-dev) ;;
    bench)
        packages+=(libbenchmark-dev libfmt-dev libglib2.0-dev libinih-dev gnuplot-nox jq crudini hyperfine)
        ;;
    docs) packages+=(doxygen) ;;
    release) packages+=(lintian) ;; # checks the Debian packages
    clang-libcxx) packages+=(clang-16 libc++-16-dev libc++abi-16-dev) ;;
    aarch64) packages+=(g++-aarch64-linux-gnu qemu-user) ;;
    windows) packages+=(g++-mingw-w64-x86-64-posix wine wine64) ;;
    fuzz) packages+=(clang-14 libclang-rt-14-dev) ;;
    coverage) packages+=(gcovr) ;;
    *) echo "setup: unknown group '$group'" >&2 && exit 2 ;;
    esac
done

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

if [ -n "${NO_SETUP:-}" ]; then
    echo "setup: NO_SETUP is set; not installed: ${missing[*]}"
    exit 0
fi
if ! command -v apt-get >/dev/null; then
    echo "setup: no apt-get; install the equivalents of these Debian packages: ${missing[*]}" >&2
    exit 1
fi
as_root=(env DEBIAN_FRONTEND=noninteractive)
[ "$(id -u)" -eq 0 ] || as_root=(sudo "${as_root[@]}")
echo "setup: installing ${missing[*]} (NO_SETUP=1 skips this)"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
