#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs a Windows program under Wine, in a prefix in build/wine. The first call creates it, in some seconds.
#
#   scripts/wine.sh PROGRAM [ARGUMENT...]
set -euo pipefail

build=$(cd "$(dirname "$0")/.." && pwd)/build
export WINEPREFIX=$build/wine WINEDEBUG=-all LC_ALL=C.UTF-8
export WINEDLLOVERRIDES="mscoree,mshtml=" # no dialogs about add-ons
unset DISPLAY
mkdir -p "$build"
ready=$WINEPREFIX/ready
(
    flock 9
    [ -e "$ready" ] || { wine wineboot --init && wineserver --wait && touch "$ready"; }
) 9>"$build/wine.lock" >/dev/null 2>&1 || { echo "wine: cannot create $WINEPREFIX" >&2; exit 1; }
# Starts Wine's services. They outlive the program that starts them and would keep its output open.
wine cmd /c exit </dev/null >/dev/null 2>&1
exec wine "$@"
