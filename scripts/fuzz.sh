#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Builds the fuzz targets and runs each for a while, from the checked-in files and what earlier runs in build/fuzz found
# worth keeping. Prints how many inputs each tried, the edges of the program that these reached, the slowest input and the
# peak of memory. An input that breaks a promise is kept in build/fuzz/found, and the status is 1.
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
mkdir -p build/fuzz/found build/fuzz/logs

# A number out of a target's log.
stat_of() { sed -n "s/^stat::$1: *//p" "$log"; }

status=0
printf '%-18s %12s %8s %10s %10s\n' target inputs edges slowest memory
for target in "$@"; do
  log=build/fuzz/logs/$target.log
  kept=build/fuzz/corpus/$target
  mkdir -p "$kept"
  seeds="tests/golden/linux tests/golden/windows"
  [ ! -d "fuzz/corpus/$target" ] || seeds="$seeds fuzz/corpus/$target"
  dictionary=fuzz/binary.dict
  case $target in *text* | chain | check | description) dictionary=fuzz/text.dict ;; esac
  verdict=
  # shellcheck disable=SC2086
  "build/fuzz/bin/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=8192 \
    -entropic=0 -print_final_stats=1 -dict="$dictionary" -artifact_prefix="build/fuzz/found/$target-" "$kept" $seeds \
    >"$log" 2>&1 || {
    verdict="broken: see $log"
    status=1
  }
  edges=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -1)
  printf '%-18s %12s %8s %8s s %7s MB %s\n' "$target" "$(stat_of number_of_executed_units)" "$edges" \
    "$(stat_of slowest_unit_time_sec)" "$(stat_of peak_rss_mb)" "$verdict"
done
exit $status
