#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Runs a Windows program under Wine, without windows, in a prefix of the build.
#
#   scripts/wine.sh PROGRAM [ARGUMENT...]
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX="${WINEPREFIX:-$root/build/wine}"
export WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
unset DISPLAY
mkdir -p "$WINEPREFIX"
# Programs that start at the same time must not make the prefix twice.
if [ ! -e "$WINEPREFIX/made" ]; then
  (
    flock 9
    # What stays behind of Wine must not hold the lock.
    [ -e "$WINEPREFIX/made" ] || { wine wineboot -i >/dev/null 2>&1 9>&- && touch "$WINEPREFIX/made"; }
  ) 9>"$WINEPREFIX/lock"
fi
exec wine "$@"
