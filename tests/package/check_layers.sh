#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Includes point one way: utility knows nothing above it, device knows utility, database both. And the
# libraries need nothing but the standard library.
#
#   check_layers.sh SOURCE_FOLDER
set -eu
cd "$1"
status=0

# Headers of the layers named in $2.. must not be included by sources of layer $1.
forbid() {
  layer=$1
  shift
  for above in "$@"; do
    for header in $(find "$above" -name '*.h' -exec basename {} \;); do
      if grep -rn "#include [<\"]$header[>\"]" "$layer" --include='*.h' --include='*.cpp'; then
        echo "$layer must not include $header of $above"
        status=1
      fi
    done
  done
}
forbid utility device database tools tests
forbid device database tools tests
forbid database tools tests

if grep -rnE '#include <(fmt|CLI|nlohmann|gtest|benchmark|zlib|zstd|boost)' utility device database; then
  echo "the library must not need packages"
  status=1
fi
exit $status
