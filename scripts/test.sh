#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Installs what is missing, builds, and runs all tests.
#
#   scripts/test.sh [PRESET...]     presets of CMakePresets.json; "release" when none is given.
#                                   That for Windows runs under Wine
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages $test_packages

[ $# -gt 0 ] || set -- release
jobs=$(nproc)
for preset in "$@"; do
  echo "== $preset"
  # shellcheck disable=SC2086
  [ "$preset" != windows ] || need_packages $windows_packages
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset" -j "$jobs"
  ctest --preset "$preset" -j "$jobs"
done
