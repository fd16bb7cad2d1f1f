#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Prints a table of whole processes that read and edit a file: qmini and other command-line editors.
#
#   benchmarks/qmini.sh QMINI [HYPERFINE OPTION...]
set -euo pipefail

qmini=$(realpath "$1")
shift
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
echo "| job | KiB | program | time | ratio to qmini |"
echo "| --- | --- | --- | --- | --- |"
for kib in 4 1024; do
    awk -v kib="$kib" 'BEGIN { for (s = 0; s < kib; s++) { print "[section" s "]"
        for (k = 0; k < 26; k++) printf "key%02d=the value that this key has\n", k } }' |
        tee git crudini >qmini
    last=section$((kib - 1))
    for job in get set; do
        value=() set=()
        [ "$job" = get ] || value=(other) set=(--set)
        commands=("$qmini $job qmini $last key25 ${value[*]}" "git config -f git $last.key25 ${value[*]}")
        ! command -v crudini >/dev/null ||
            commands+=("crudini ${set[*]:---get} crudini $last key25 ${value[*]}")
        hyperfine -N --style none --warmup 2 --export-json result.json "$@" "${commands[@]}" >/dev/null 2>&1
        jq -r --arg job "$job" --arg kib "$kib" '.results[0].median as $ours | .results[]
            | def digits: . * 100 | round / 100;
            "| \($job) | \($kib) | \(.command | split("/")[-1] | split(" ")[0]) | "
            + "\(.median * 1e3 | digits) ms | "
            + "\(.median / $ours | digits) |"' result.json
    done
done
