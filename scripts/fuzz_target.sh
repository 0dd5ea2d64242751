#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Runs one target that scripts/fuzz.sh has built, and prints its line of the table.
#
#   scripts/fuzz_target.sh SECONDS TARGET
set -eu
cd "$(dirname "$0")/.."
seconds=$1
target=$2

log=build/fuzz/logs/$target.log
kept=build/fuzz/corpus/$target
mkdir -p "$kept" build/fuzz/found build/fuzz/logs
seeds="tests/golden/linux tests/golden/windows"
[ ! -d "fuzz/corpus/$target" ] || seeds="$seeds fuzz/corpus/$target"
dictionary=fuzz/binary.dict
case $target in *text* | chain | check | description) dictionary=fuzz/text.dict ;; esac

status=0
# shellcheck disable=SC2086
"build/fuzz/bin/fuzz_$target" -max_total_time="$seconds" -timeout=20 -rss_limit_mb=2048 -max_len=8192 \
  -entropic=0 -print_final_stats=1 -dict="$dictionary" -artifact_prefix="build/fuzz/found/$target-" "$kept" $seeds \
  >"$log" 2>&1 || status=1

# A number out of the target's log.
stat_of() { sed -n "s/^stat::$1: *//p" "$log"; }
edges=$(sed -n 's/.* cov: \([0-9]*\) .*/\1/p' "$log" | tail -1)
[ $status = 0 ] && verdict= || verdict="broken: see $log"
printf '%-18s %12s %8s %8s s %7s MB %s\n' "$target" "$(stat_of number_of_executed_units)" "$edges" \
  "$(stat_of slowest_unit_time_sec)" "$(stat_of peak_rss_mb)" "$verdict"
exit $status
