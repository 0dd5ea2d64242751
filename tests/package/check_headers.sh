#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Every public header compiles alone, without a warning. In an older language it gives one error, which names the one
# that is needed.
#
#   check_headers.sh SOURCE_FOLDER COMPILER
set -eu
cd "$1"
compiler=$2
# Compiles a header alone, with further options.
#   compile HEADER OPTION...
compile() {
  header=$1
  shift
  echo "#include \"$(basename "$header")\"" |
    "$compiler" "$@" -fsyntax-only -x c++ -Iutility/i -Idevice/i -Idatabase/qelmodb/i -
}

for header in utility/i/*.h device/i/*.h database/qelmodb/i/*.h; do
  compile "$header" -std=c++20 -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wundef -Werror ||
    { echo "$header does not compile alone"; exit 1; }
  if messages=$(compile "$header" -std=c++17 2>&1); then
    echo "$header compiles as C++17"
    exit 1
  fi
  errors=$(echo "$messages" | grep 'error:')
  case $errors in
    *error:*error:*) right=no ;;
    *"qelmodb needs C++20"*) right=yes ;;
    *) right=no ;;
  esac
  [ $right = yes ] || { printf '%s as C++17 should give one error, which asks for C++20:\n%s\n' "$header" "$errors"; exit 1; }
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
