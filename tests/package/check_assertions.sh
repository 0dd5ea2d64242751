#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The libraries report impossible states through the message manager. They use the runtime's assertion at one place
# only, in every build, which clients that debug a build of the switch-matrix templates know.
#
#   check_assertions.sh SOURCE_FOLDER
set -eu
cd "$1"
found=$(grep -rnE '(^|[^_a-z])assert *\(' utility device database --include='*.h' --include='*.cpp' |
  sed 's/:[0-9]*: */: /')
expected="database/qelmodb/bx_matrix_build.cpp: assert(k == num_wirelist);"
[ "$found" = "$expected" ] && exit 0
echo "expected: $expected"
echo "found:    $found"
exit 1
