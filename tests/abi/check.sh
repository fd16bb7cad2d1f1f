#!/bin/sh
# SPDX-License-Identifier: MIT
# Compares the symbols that libraries export with those on record in symbols.txt. Members of a class with the
# same parameters share a line; what exists for both character types is one symbol, with Char for the type.
#
#   check.sh LIBRARY...         writes symbols-built.txt to the current folder
set -eu
recorded=$(dirname "$0")/symbols.txt
for library; do
    echo "== ${library##*/}"
    nm -DCj --defined-only "$library" | # without the address sanitizer's
        sed -E '/__odr_asan/d; s/__cxx11::basic/basic/g
            s/(basic_string[a-z_]*<[a-z_]+), std::char_traits[^>]*>(, std::allocator[^>]*>)? >/\1>/g' |
        LC_ALL=C sort -u | awk '
            { # narrow symbols come before wide ones
                narrow = $0
                if (gsub(/wchar_t/, "char", narrow) && narrow in symbols) gsub(/wchar_t/, "Char")
                else order[++count] = narrow
                symbols[narrow] = $0
            }
            END {
                for (i = 1; i <= count; ++i) {
                    symbol = symbols[order[i]]
                    name = substr(symbol, 1, match(symbol "(", /\(/) - 1)
                    match(name, /.*(::| for )/)
                    group = substr(name, 1, RLENGTH) "\t" substr(symbol, length(name) + 1)
                    if (!(group in members)) groups[++last] = group
                    members[group] = members[group] "," substr(name, RLENGTH + 1)
                }
                for (i = 1; i <= last; ++i) {
                    list = substr(members[groups[i]], 2)
                    split(groups[i], around, "\t")
                    print around[1] (list ~ /,/ ? "{" list "}" : list) around[2]
                }
            }'
done >symbols-built.txt
diff -u "$recorded" symbols-built.txt || {
    echo "To record them: cp $PWD/symbols-built.txt $recorded"
    exit 1
}
