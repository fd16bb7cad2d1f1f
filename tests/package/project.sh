#!/bin/sh
# SPDX-License-Identifier: MIT
# Extracts the files of a document's projects, runs one of its scripts in the script's folder, and compares
# the end of the output with output.txt from the same folder or the top folder. Numbers may differ.
#
#   project.sh SOURCE-FOLDER DOCUMENT SCRIPT WORK-FOLDER
set -eu
rm -rf "$4"
mkdir -p "$4"
awk -v "project=$4" -f "$1/tests/docs/Extract.awk" "$1/$2"
cd "$4/$(dirname "$3")"
ln -s "$1" qmUtility # "a copy of this repository"
sh -e "$(basename "$3")" >output
[ -e output.txt ] || cp "$4/output.txt" .
tail -n "$(wc -l <output.txt)" output | sed 's/-\{0,1\}[0-9]/0/g' >actual
sed 's/-\{0,1\}[0-9]/0/g' output.txt | diff - actual
