#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the Debian packages in a folder of their own, checks them, unpacks them, and tries the tool.
#
#   debian.sh SOURCE-FOLDER BUILD-FOLDER ROOT LIBRARY-FOLDER VERSION
set -euo pipefail

build=$2 root=$3 libdir=$4 version=$5
cd "$1"
rm -rf "$root" "$build"/*.deb
cmake --preset package -B "$build"
cmake --build "$build"
cpack --config "$build/CPackConfig.cmake" -B "$build"
! command -v lintian || lintian --allow-root --display-info --fail-on error,warning,info "$build"/*.deb

# expect PATTERN COMMAND...: fails unless the command succeeds and its output matches the regular expression.
expect() {
    local output
    output=$("${@:2}" 2>&1) && [[ $output =~ $1 ]] && return
    echo "${*:2}: \"$output\" does not match \"$1\"" >&2
    exit 1
}

package() { echo "$build/$1_${version/-/\~}"_*.deb; }

expect 'libc6 .*libstdc\+\+6 ' dpkg-deb -f "$(package libqmutility1)" Depends
expect "^libqmutility1 \(= ${version/-/\~}\)$" dpkg-deb -f "$(package libqmutility-dev)" Depends
expect '^libc6 [^,]*$' dpkg-deb -f "$(package qmini)" Depends
expect $'^command-line editor of INI files\n' dpkg-deb -f "$(package qmini)" Description
for name in libqmutility1 libqmutility-dev qmini; do
    expect '^(same|foreign)$' dpkg-deb -f "$(package $name)" Multi-Arch
    expect '^https://' dpkg-deb -f "$(package $name)" Homepage
done

# The runtime package contains only the versioned libraries and its documents.
dpkg-deb -x "$(package libqmutility1)" "$root"
expect '^$' find "$root" -not -type d -not -path "$root/usr/share/*" \
    -not -regex "$libdir/lib[A-Za-z]+\.so\.1\(\.0\.0\)?"
ls "$libdir/libqmUtility.so.1" "$root/usr/share/doc/libqmutility1/CHANGELOG.md"
dpkg-deb -x "$(package libqmutility-dev)" "$root"

# The tool runs, bash completes its command line, and its manual page has no warnings.
dpkg-deb -x "$(package qmini)" "$root"
PATH=$root/usr/bin:$PATH
expect "^qmini $version$" qmini --version
# shellcheck source=tools/qmini/qmini.bash
source "$root/usr/share/bash-completion/completions/qmini"
# completes LINE WORD...: completes a command line, which bash splits into these words.
completes() {
    COMP_LINE=$1 COMP_POINT=${#1} COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2))
    _qmini
    echo "${COMPREPLY[*]}"
}
file=$root/settings.ini
printf '[Old one]\na:b=\na:c=\n' >"$file"
expect '^sections set sort$' completes 'qmini s' qmini s
expect '^--dry-run$' completes 'qmini set --d' qmini set --d
expect '^Old\\ one$' completes "qmini keys $file O" qmini keys "$file" O
expect '^Old one$' completes "qmini keys $file 'O" qmini keys "$file" "'O"
expect '^b c$' completes "qmini get $file 'Old one' a:" qmini get "$file" "'Old one'" a :
expect '^\\# \\;$' completes 'qmini comment f S --with ' qmini comment f S --with ''
if command -v man; then
    expect 'edit FILE.*COMMON OPTIONS' man -l "$root/usr/share/man/man1/qmini.1.gz"
    expect '^$' sh -c "man --warnings -l '$root/usr/share/man/man1/qmini.1.gz' 2>&1 >/dev/null"
fi
