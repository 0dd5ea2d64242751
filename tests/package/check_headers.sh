#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Every public header compiles alone, without a warning.
#
#   check_headers.sh SOURCE_FOLDER COMPILER
set -eu
cd "$1"
for header in utility/i/*.h device/i/*.h database/qelmodb/i/*.h; do
  echo "#include \"$(basename "$header")\"" |
    "$2" -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -x c++ \
      -Iutility/i -Idevice/i -Idatabase/qelmodb/i - || { echo "$header does not compile alone"; exit 1; }
done
