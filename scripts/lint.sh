#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Holds the sources against .clang-format and .clang-tidy. Changes nothing.
#
#   scripts/lint.sh [deep]     with "deep", clang's static analyzer looks, too: more than twice the time
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages clang-format clang-tidy

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
# A build without tests: it compiles each source once, so each is looked at once. The tests are left to the
# compiler's warnings and the sanitizers; what is not in this build, to the compiler for Windows.
cmake -S . -B build/lint -G Ninja -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DQELMODB_UNITE=ON >/dev/null
deep=
[ "${1:-}" = deep ] && deep=--checks=clang-analyzer-*
sed -n 's/^ *"file": "\(.*\)".*/\1/p' build/lint/compile_commands.json |
  xargs -P "$(nproc)" -n 1 clang-tidy -p build/lint --quiet ${deep:+"$deep"} 2>/dev/null
echo "lint: clean"
