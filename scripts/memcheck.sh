#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Runs a core of the tests under valgrind's memcheck, which sees what the sanitizers do not: bytes that nobody set.
# Left out are tests that start processes, those whose own functions it replaces, and large trees, which would take
# hours.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages $test_packages valgrind

programs="utility_tests device_tests internals_tests database_tests records_tests templates_tests"
cmake --preset release >/dev/null
# shellcheck disable=SC2086
cmake --build --preset release -j "$(nproc)" --target $programs
left_out='*DeathTest*:*Memory*:*Fault*:*Kill*:*Hostile*:*Every*:*ExtremeSizes*:*Deep*:*Allocation*:*Crafted*:*Model*:*Random*:*Objections*:*32768*:*65535*:*Large*:*Limits*:*LongPaths*'
status=0
for program in $programs; do
  echo "== $program"
  valgrind -q --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite,possible \
    "build/release/bin/$program" --gtest_brief=1 --gtest_filter="-$left_out" || status=1
done
exit $status
