#!/usr/bin/env bash
# Sets the machine up, builds the examples and shows the library at work: every command of the editor qmini on a
# copy of a settings file, a tour of the timing classes, and a host application whose settings are edited while it
# runs. Fails when something does not come out as it should.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
echo "demo: building the examples"
if ! log=$(cmake --preset release 2>&1 && cmake --build --preset release --target qmini timing_tour host 2>&1); then
    echo "$log" >&2
    exit 1
fi

examples=$PWD/build/release/examples
qmini=$tools/qmini/qmini
host=$examples/host/host
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp tools/qmini/demo.ini "$folder/settings.ini"
cp examples/frameloop/frameloop.ini "$folder"
cd "$folder"

# Prints a sentence about what comes next.
say() {
    echo
    fold -s -w 90 <<<"$*" | sed 's/ *$//'
}

# Prints a command line as it would be typed.
typed() {
    local word
    printf '  $ qmini'
    for word in "$@"; do
        [[ $word =~ ^[A-Za-z0-9_.-]+$ ]] || word="'$word'"
        printf ' %s' "$word"
    done
    echo
}

# run CODE WORD...: runs qmini with the words, which has to end with the code.
run() {
    local expected=$1 code=0
    shift
    "$qmini" "$@" 2>&1 | sed 's/\r$/^M/; s/^/    /' || code=${PIPESTATUS[0]}
    if [ "$code" -ne "$expected" ]; then
        echo "demo: that ended with exit code $code, not $expected" >&2
        exit 1
    fi
}

# look WORD...: shows a command that only reads. With a number in front, that is its exit code.
look() {
    local expected=0
    if [[ $1 =~ ^[0-9]$ ]]; then
        expected=$1
        shift
    fi
    typed "$@"
    run "$expected" "$@"
    [ "$expected" -eq 0 ] || echo "    (exit code $expected)"
}

# edit WORD...: shows the difference that a command makes, then lets it make it.
edit() {
    typed "$@"
    run 0 "$@" --dry-run
    run 0 "$@"
}

say "== A settings file, as it comes: two [Window] headers, commented-out keys and a commented-out section," \
    "and a part with CR LF line ends, which are shown here as ^M."
sed 's/\r$/^M/; s/^/    /' settings.ini
echo

say "== Looking"
say "What may surprise the owner of this file, with line numbers. Exit code 1 says that there is something:"
look 1 check settings.ini
say "The last finding is soon mended, and takes the one above it along, since that comment now has a key below it:"
echo "  $ echo >>settings.ini"
echo >>settings.ini
look 1 check settings.ini
say "The sections, the commented-out one included:"
look sections settings.ini
say "The keys of a section, from below both of its headers:"
look keys settings.ini Window
say "A value. The key stands there twice, and the first one counts:"
look get settings.ini Window width
say "A commented-out key is found like a live one:"
look get settings.ini General theme

say "== Editing. After each command comes the difference that it makes to the file (what --dry-run prints)."
say "The first edit changes one value, and every line: an edit writes the file anew, in one form. Blank lines and" \
    "CRs go, live lines begin with one space, and text after a \"]\" is lost. Later edits change only what they are" \
    "about."
edit set settings.ini Window height 900
say "A new key becomes the first of its section:"
edit set settings.ini Rendering shadows soft
say "A new section goes to the end of the file:"
edit set settings.ini Network proxy 'proxy.example 8080'
say "A comment above a key, two lines of it. The \"; \" in front is added:"
edit note settings.ini Network proxy $'Host and port.\nLeave empty for a direct connection.'
say "A comment above the header of a section:"
edit note settings.ini Network 'Since release 7'
say "Commenting out a key with \"#\", or with \";\":"
edit comment settings.ini General language
edit comment settings.ini Window maximized --with ';'
say "Bringing a commented-out key back:"
edit uncomment settings.ini General theme
say "Commenting out a whole section, header and keys:"
edit comment settings.ini Network
say "Bringing a whole section back:"
edit uncomment settings.ini Debug
say "Renaming a section:"
edit rename settings.ini 'Recent files' Recent
say "Deleting a key takes the comments above it along. Of the two keys named width the first goes:"
edit delete settings.ini Window width
say "... and the other one counts from now on:"
look get settings.ini Window width
say "Adding an empty section:"
edit add settings.ini Plug-ins
say "Sorting the sections and the keys in each. Comments move with the line below them, and upper case comes first." \
    "A section with two headers gets all of its keys below each:"
edit sort settings.ini
say "Deleting a section, from below all of its headers:"
edit delete settings.ini Window
say "Sorting the other way round:"
edit sort settings.ini --descending
say "The file as it is understood now, without the spaces in front of live lines:"
look show settings.ini
say "A new, empty file:"
typed create other.ini
run 0 create other.ini

say "== When something is wrong, one line on standard error and the exit code say so."
say "A key that is not there: the blank in front of its \"=\" belongs to its name, as \"check\" said above:"
look 1 get settings.ini Rendering vsync
say "A value that would be read back as something else:"
look 2 set settings.ini General title 'viewer [beta]'
say "A header without a \"]\", in a file that no command can read therefore:"
printf '[General]\nlanguage=en\n[Window\nwidth=1280\n' >other.ini
look 2 get other.ini General language

say "== Timing: a tour of the stopwatch, the trace marker and the frame counter. In brackets stand the figures of the" \
    "standard library's own clocks."
"$examples/timing/timing_tour" 2>&1 | sed 's/^/    /'

# columns NAME...: prints these columns of the frame log: their names and the last two rows.
columns() {
    awk -F, -v names="$*" '
        NR == 1 { n = split(names, name, " "); for (i = 1; i <= NF; i++) at[$i] = i }
        { before = row; row = "   "; for (i = 1; i <= n; i++) row = row sprintf(" %20s", $at[name[i]]) }
        NR == 1 { print row }
        END { print before; print row }' frames.csv
}

# Computes two figures of the last frame from the rows of the frame log. They have to be those that the counter gave.
recompute() {
    awk -F, '
        NR == 1 { for (i = 1; i <= NF; i++) at[$i] = i; next }
        {
            rate[NR] = $at["tick_period"] / $at["tick_elapsed"]
            fps = $at["fps"]
            average = $at["fps_average"]
        }
        function compare(what, computed, logged) {
            printf "    %-36s %.9f, in the log %.9f\n", what, computed, logged
            if ((computed - logged) ^ 2 > 1e-16 * logged ^ 2) wrong = 1
        }
        END {
            for (i = NR - 15; i <= NR; i++) sum += rate[i]
            compare("tick_period / tick_elapsed:", rate[NR], fps)
            compare("mean of that over 16 frames:", sum / 16, average)
            exit wrong
        }' frames.csv
}

say "== A host application. It draws an animated picture in a terminal; here, where its output goes elsewhere, it" \
    "prints a line each half second. Its settings:"
sed 's/^/    /' host.ini
echo
echo "  $ host --seconds 5 --frame-log frames.csv host.ini"
"$host" --seconds 5 --frame-log frames.csv host.ini 2>&1 | tee host.out | sed -u 's/^/    /' &
until grep -qs 'frame ' host.out || ! kill -0 $! 2>/dev/null; do # it has read its settings, and draws
    sleep 0.5
done
say "Meanwhile, as if in another terminal, someone changes the limit of the frame rate:"
typed set host.ini Frames FrameLimit 25
run 0 set host.ini Frames FrameLimit 25
echo
if ! wait $! || ! grep -q 'FrameLimit 60 -> 25' host.out; then
    echo "demo: the host failed, or did not notice the change" >&2
    exit 1
fi

say "The host has written the statistics of its run back into the file. The edit is still there:"
look get host.ini Frames FrameLimit
echo "  $ tail -n 7 host.ini"
tail -n 7 host.ini | sed 's/^/    /'
say "The frame log holds all that the counter knew after each frame. Some columns of the last two rows:"
columns frame tick_period tick_elapsed fps fps_average
say "The figures are true; computed anew for the last frame:"
recompute

say "== That was all. \"qmini --help\" and \"host --help\" tell more; the programs are" "$qmini" "and" "$host," \
    "and the latter is best seen in a terminal."
