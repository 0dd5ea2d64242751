#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Builds the fuzz targets and runs each for a while, one on each core, from the checked-in files and what earlier runs
# in build/fuzz found worth keeping. Prints how many inputs each tried, the edges of the program that these reached, the
# slowest input and the peak of memory. An input that breaks a promise is kept in build/fuzz/found, and the status is
# not 0.
#
#   scripts/fuzz.sh SECONDS [TARGET...]     such as load_text; all of them when none is given
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages $fuzz_packages

seconds=$1
shift
all="load_text load_binary load_compressed load_text_grid load_binary_grid check records chain tree description"
# shellcheck disable=SC2086
[ $# -gt 0 ] || set -- $all

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -j "$(nproc)"
printf '%-18s %12s %8s %10s %10s\n' target inputs edges slowest memory
printf '%s\n' "$@" | xargs -P "$(nproc)" -n 1 scripts/fuzz_target.sh "$seconds"
