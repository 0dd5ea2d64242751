#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# What the shared library exports is what exports.txt lists: nothing more, and nothing is missing. The list is one for
# all systems, so types whose name differs are called by what they are, and what only some compilers export is left
# out: tables of virtual functions, type information, statics of inline functions.
#
#   check_exports.sh LIBRARY LIST OBJDUMP [write]     with "write", makes the list anew
set -eu
library=$1
list=$2
objdump=$3

# A DLL has a table of its own; elsewhere the names stand among the dynamic symbols, imported ones as undefined.
mangled() {
  case $library in
    *.dll) "$objdump" -p "$library" | sed -n '/Ordinal\/Name/,/^$/p' | awk 'NF > 2 { print $NF }' ;;
    *) "$objdump" -T "$library" | awk '$1 ~ /^[0-9a-f]+$/ && !/\*UND\*/ && !/\*ABS\*/ { print $NF }' ;;
  esac
}

exported() {
  mangled | c++filt | grep -vE '^(typeinfo|vtable|non-virtual thunk|guard variable)|\)( const)?::|^Table$'
}

# long has 32 bits on some systems and 64 on others.
case $library in
  *.dll)
    if exported | sed 's/long long//g' | grep -w long; then
      echo "an exported signature has a long"
      exit 1
    fi
    ;;
esac

found=$(exported | sed -E 's/unsigned long( long)?/uint64/g; s/\blong( long)?\b/int64/g' | LC_ALL=C sort -u)
if [ "${4:-}" = write ]; then
  printf '%s\n' "$found" >"$list"
fi
printf '%s\n' "$found" | diff "$list" - || {
  echo "< is missing, > is too much; when that is meant: $0 $1 $2 $3 write"
  exit 1
}
