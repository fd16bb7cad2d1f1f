#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of this tree that the first call makes (which takes some seconds).
#
#   scripts/wine.sh PROGRAM [ARGUMENT...]
set -euo pipefail

build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX=$build/wine WINEDEBUG=-all LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="mscoree,mshtml=" # no dialogs about add-ons
unset DISPLAY
mkdir -p "$build"
if [ ! -e "$WINEPREFIX/ready" ]; then
    (
        flock 9
        [ -e "$WINEPREFIX/ready" ] || { wine wineboot --init && wineserver --wait && touch "$WINEPREFIX/ready"; }
    ) 9>"$build/wine.lock" >/dev/null 2>&1 || { echo "wine: cannot make $WINEPREFIX" >&2; exit 1; }
fi
# Brings up Wine's services if they do not run. They outlive the program that starts them, and would keep the output
# of this one open.
wine cmd /c exit </dev/null >/dev/null 2>&1
exec wine "$@"
