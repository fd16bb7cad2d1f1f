#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Prints a table of whole processes that read and edit a file: qmini and other command-line editors.
#
#   benchmarks/qmini.sh QMINI [HYPERFINE OPTION...]
set -euo pipefail

PATH=$(dirname "$(realpath "$1")"):$PATH
options=(-N --style none --warmup 2 --time-unit millisecond --export-markdown table "${@:2}")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
first=1 # line of a table to print: the head only once
for kib in 4 1024; do
    awk -v kib="$kib" 'BEGIN { for (s = 0; s < kib; s++) { print "[section" s "]"
        for (k = 0; k < 26; k++) printf "key%02d=the value that this key has\n", k } }' >"qmini-${kib}KiB.ini"
    for program in git crudini; do cp "qmini-${kib}KiB.ini" "$program-${kib}KiB.ini"; done
    key="${kib}KiB.ini section$((kib - 1)) key25"
    for job in get set; do
        value=$([ $job = get ] || echo ' other')
        hyperfine "${options[@]}" "qmini $job qmini-$key$value" \
            "git config -f git-${key% *}.key25$value" "crudini --$job crudini-$key$value" >/dev/null 2>&1
        tail -n +$first table
        first=3
    done
done
