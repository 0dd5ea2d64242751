#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Installs what is missing, builds, and runs all tests.
#
#   scripts/test.sh [PRESET[:PROGRAM]...]     presets of CMakePresets.json, with sanitizers also one test program of
#                                             theirs; "release" when none is given. That for Windows runs under Wine
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages $test_packages

[ $# -gt 0 ] || set -- release
jobs=$(nproc)
# Configures and builds a preset, or some targets of it.
build() {
  cmake --preset "$1" >/dev/null
  cmake --build --preset "$1" -j "$jobs" ${2:+--target "$2"}
}

# Runs all tests of the build for Windows. Wine as Debian packages it ends its server with the last program, and one
# that starts at that moment fails; so one waits for input until the tests are done.
test_windows() {
  waiting=build/windows/waiting
  rm -f "$waiting"
  mkfifo "$waiting"
  scripts/wine.sh cmd <"$waiting" >/dev/null 2>&1 &
  exec 9>"$waiting"
  # When this is done, the system is up.
  scripts/wine.sh cmd /c exit 9>&-
  ctest --preset windows -j "$jobs" 9>&-
  exec 9>&-
}

for each in "$@"; do
  echo "== $each"
  preset=${each%%:*}
  program=$(expr "$each" : '[^:]*:\(.*\)' || true)
  if [ "$preset" = windows ]; then
    # shellcheck disable=SC2086
    need_packages $windows_packages
    # The two systems' tools exchange files.
    build release bxdb
  fi
  build "$preset" "$program"
  if [ "$preset" = windows ]; then
    test_windows
  else
    ctest --preset "$preset" -j "$jobs" ${program:+-R "^${program}_"}
  fi
done
