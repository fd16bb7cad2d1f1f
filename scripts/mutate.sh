#!/usr/bin/env bash
# Puts the faults of scripts/mutations.txt into the library, one at a time, and tells which of them the tests do not
# notice. It works in copies of the tree below build/mutate, side by side, under the address and
# undefined-behaviour sanitizers. Fails when a fault goes unnoticed that is not said to be harmless, or when one does
# not fit the sources any more.
#
#   scripts/mutate.sh [PATH...]     only the faults in files whose path holds one of these
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
work=$PWD/build/mutate
mkdir -p "$work"

# The faults: where they go, the test programs that have to notice them, what to find and what to put in its place,
# and why it changes nothing if that is so. The file explains its form.
file=() tests=() find=() put=() harmless=()
number=0
last=@
while IFS= read -r line; do
    kind=${line:0:1} text=${line:2}
    case "$kind" in
    @) read -r current programs <<<"$text" ;;
    -)
        if [ "$last" != - ]; then
            number=$((number + 1))
            file[number]=$current tests[number]=$programs find[number]=$text harmless[number]=
        else
            find[number]+=$'\n'$text
        fi
        ;;
    +) if [ "$last" != + ]; then put[number]=$text; else put[number]+=$'\n'$text; fi ;;
    =) harmless[number]+=$text ;;
    esac
    [[ ! $kind =~ [@+=-] ]] || last=$kind
done <scripts/mutations.txt

# show WHAT I: prints a fault under a heading.
show() {
    printf '%s in %s\n' "$1" "${file[$2]}"
    printf '%s\n' "${find[$2]}" | sed 's/^/  - /'
    printf '%s\n' "${put[$2]}" | sed 's/^/  + /'
}

# check TREE PROGRAM...: builds and runs the test programs. Returns 1 when a test fails, 2 when one cannot be built.
check() {
    local tree=$1 build=$1/build program code=0
    shift
    cmake --build "$build" --target "$@" >"$tree.log" 2>&1 || return 2
    mkdir -p "$tree.tmp"
    for program in "$@"; do
        # A fault may well make a program run for ever, or take all memory.
        TMPDIR=$tree.tmp ASAN_OPTIONS=hard_rss_limit_mb=2000 timeout -k 1 60 \
            "$build/tests/"*"/$program" --gtest_brief=1 --gtest_fail_fast >"$tree.log" 2>&1 </dev/null ||
            code=1
        [ $code -eq 0 ] || break
    done
    chmod -R u+rwX "$tree.tmp" && rm -rf "$tree.tmp"
    return $code
}

# try WORKER: tries every fault whose turn it is and prints what became of it. The results go to WORKER.results.
try() {
    local tree=$work/$1 i path text code
    mkdir -p "$tree"
    git ls-files -z --cached --others --exclude-standard | while IFS= read -r -d '' path; do
        mkdir -p "$tree/$(dirname "$path")"
        cmp -s "$path" "$tree/$path" || cp "$path" "$tree/$path"
    done
    cmake -S "$tree" -B "$tree/build" -G Ninja -DCMAKE_CXX_FLAGS="$flags" >"$tree.log"
    # shellcheck disable=SC2046,SC2048,SC2086 # the names of the programs are words
    if ! check "$tree" $(printf '%s\n' ${tests[*]} | sort -u); then
        echo "mutate: the tests fail before any fault is put in:" >&2
        tail -n 20 "$tree.log" >&2
        exit 1
    fi
    : >"$tree.results"
    for ((i = 1 + $1; i <= number; i += workers)); do
        path=${file[i]}
        [[ -z $chosen || $path =~ $chosen ]] || continue
        text=$(cat "$path")
        if [[ $text != *"${find[i]}"* || ${text#*"${find[i]}"} == *"${find[i]}"* ]]; then
            show "does not stand there once:" "$i"
            echo error >>"$tree.results"
            continue
        fi
        printf '%s\n' "${text%%"${find[i]}"*}${put[i]}${text#*"${find[i]}"}" >"$tree/$path"
        code=0
        # shellcheck disable=SC2086 # as above
        check "$tree" ${tests[i]} || code=$?
        cp "$path" "$tree/$path"
        case $code${harmless[i]:+h} in
        1) echo noticed ;;
        0h) echo harmless ;;
        0) show "not noticed:" "$i" >&2 && echo survived ;;
        1h) show "said to be harmless, but noticed:" "$i" >&2 && echo error ;;
        2*) show "does not compile:" "$i" >&2 && echo error ;;
        esac >>"$tree.results"
    done
}

chosen=$(IFS='|' && echo "$*")
flags="-O0 -w -fsanitize=address,undefined -fno-sanitize-recover=all"
workers=$(($(nproc) < 4 ? $(nproc) : 4))
rm -f "$work"/*.results
for ((worker = 0; worker != workers; ++worker)); do
    try "$worker" &
done
failed=0
for job in $(jobs -p); do
    wait "$job" || failed=1
done
[ $failed -eq 0 ] || exit 1

count() { cat "$work"/*.results | grep -c "^$1$" || true; }
noticed=$(count noticed) harmless=$(count harmless) survived=$(count survived) errors=$(count error)
all=$((noticed + harmless + survived))
[ $all -ne 0 ] || all=1
echo "mutate: of $((noticed + harmless + survived)) faults $noticed were noticed ($((1000 * noticed / all / 10)).$((1000 * \
    noticed / all % 10)) %), $harmless are harmless, $survived went unnoticed; $errors errors of the set"
[ "$survived" -eq 0 ] && [ "$errors" -eq 0 ]
