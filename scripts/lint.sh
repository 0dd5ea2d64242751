#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Holds the sources against .clang-format and .clang-tidy. Changes nothing; needs the release preset configured.
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
need_packages clang-format clang-tidy

git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run --Werror
[ -e build/release/compile_commands.json ] || cmake --preset release >/dev/null
# Tests are left to the compiler's warnings and the sanitizers.
git ls-files 'utility/*.cpp' 'device/*.cpp' 'database/*.cpp' 'tools/*.cpp' |
  xargs -P "$(nproc)" -n 1 clang-tidy -p build/release --quiet 2>/dev/null
echo "lint: clean"
