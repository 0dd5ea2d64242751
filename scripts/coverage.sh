#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Builds the libraries so that they count, runs their tests, and prints which part of the lines these came to, file by
# file, and of lines and branches in all. Branches that only an exception of a called function takes are left out. Fails
# below the shares that are to be kept.
#
#   scripts/coverage.sh [OPTION...]     options for gcovr, such as --html-details build/coverage/report.html
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages $test_packages gcovr

cmake --preset coverage >/dev/null
cmake --build --preset coverage -j "$(nproc)"
find build/coverage -name '*.gcda' -delete
# Program by program: each test as a process would write all counts each time.
for program in build/coverage/bin/*_tests; do "$program" --gtest_brief=1; done
gcovr --root . --object-directory build/coverage --filter 'database/' --filter 'device/' --filter 'utility/' \
  --exclude-throw-branches --exclude-unreachable-branches --print-summary \
  --fail-under-line 98 --fail-under-branch 92 "$@" build/coverage
