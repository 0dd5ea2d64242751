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
# Wine's loader lies at a fixed low address, and Linux puts its heap at a random place of the gigabyte behind it: now and
# then where Windows has its shared page, and Wine fails to start. Some containers do not let the randomness be switched
# off; there the tests' own programs are started again.
if setarch -R true 2>/dev/null; then
  loader="setarch -R wine"
else
  loader=wine
fi
# Programs that start at the same time must not make the prefix twice.
if [ ! -e "$WINEPREFIX/made" ]; then
  (
    flock 9
    # What stays behind of Wine must not hold the lock.
    [ -e "$WINEPREFIX/made" ] || { $loader wineboot -i >/dev/null 2>&1 9>&- && touch "$WINEPREFIX/made"; }
  ) 9>"$WINEPREFIX/lock"
fi
exec $loader "$@"
