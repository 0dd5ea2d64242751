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

# What a client has by one header is whole, so that it can be made, destroyed and asked.
complete() {
  header=$1
  shift
  for class in "$@"; do
    printf '#include <%s>\nstatic_assert(sizeof(%s) > 0);\n' "$header" "$class" |
      "$compiler" -std=c++20 -fsyntax-only -x c++ -Iutility/i -Idevice/i -Idatabase/qelmodb/i - ||
      { echo "$class is not complete by $header"; exit 1; }
  done
}
compiler=$2
complete qelmodb.h BX_WIRE BX_INSTANCE BX_DB BX_GRID BX_TILEITERATOR ASS_TEMPLATE
complete qelmotmplt.h BASIC_ASS_TEMPLATE WIRE_TEMPLATE_SM 'RANGE_MAP<BX_POINT>'
