#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Installs what is missing, builds, and measures the library beside the limits of the machine and beside other ways of
# keeping a device. Prints one table; what was measured stays in build/bench/SIZE.json.
#
#   scripts/bench.sh [S] [M] [L]     sizes of devices; M when none is given
#
# Files are made in a folder that goes away, below $TMPDIR: up to 6 GB for L, which takes 8 GB of memory, too.
# TMPDIR=/dev/shm leaves the disk out of the dumps.
# QELMODB_BENCH_OPTIONS in the environment is passed on, such as --benchmark_filter=load.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# The tests are configured beside the benchmarks.
# shellcheck disable=SC2086
need_packages $build_packages $test_packages $bench_packages python3

[ $# -gt 0 ] || set -- M
build=build/bench
cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Release -DQELMODB_DEVELOPER=ON -DQELMODB_BENCH_PEERS=ON |
  grep -e "leave out" -e Warning -e Error || true
nice cmake --build $build -j "$(nproc)" --target qelmodb_bench

TMPDIR=$(mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
trap 'exit 2' INT TERM

# Repetitions take turns, so that what else the machine does falls on all alike.
status=0
results=""
for size in "$@"; do
  case $size in
    S) repetitions=15 ;;
    M) repetitions=7 ;;
    L) repetitions=3 ;;
    *) echo "scripts/bench.sh: sizes are S, M and L, not \"$size\"" >&2 && exit 2 ;;
  esac
  echo "== measuring $size"
  result=$build/$size.json
  rm -f "$result"
  # shellcheck disable=SC2086
  $build/bin/qelmodb_bench --device="$size" --benchmark_repetitions=$repetitions --benchmark_min_time=0.05 \
    --benchmark_enable_random_interleaving=true --benchmark_out="$result" --benchmark_out_format=json \
    --benchmark_color=false ${QELMODB_BENCH_OPTIONS:-} >$build/"$size".log 2>&1 || {
    status=1
    grep "ERROR" $build/"$size".log | sort -u || tail -n 5 $build/"$size".log
  }
  [ ! -s "$result" ] || results="$results $result"
done
echo
# shellcheck disable=SC2086
python3 scripts/bench_table.py $results || status=1
exit $status
