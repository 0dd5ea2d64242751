#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Installs the library into an empty folder, builds the example client against the copy, once by its CMake
# package and once by pkg-config, and compares what the client prints.
#
#   check_client.sh BUILD_FOLDER SOURCE_FOLDER COMPILER
set -eu
build=$1
source=$2
compiler=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cmake --install "$build" --prefix "$work/installed" >"$work/install.log"
cmake -S "$source/examples/client" -B "$work/client" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_CXX_FLAGS="${CLIENT_FLAGS:-}" -DCMAKE_PREFIX_PATH="$work/installed" >"$work/configure.log"
cmake --build "$work/client" >"$work/build.log"

cat >"$work/expected" <<'END'
at (5, 25): TILE_2
its wire E1: (9, 23)
switch matrices: 4
restored from templates: the same
END
"$work/client/client" "$work/device.bxd" >"$work/printed"
diff "$work/expected" "$work/printed"

pc=$(dirname "$(find "$work/installed" -name qelmodb.pc)")
# The copy lies elsewhere than the prefix it was configured for.
flags=$(PKG_CONFIG_PATH=$pc pkg-config --define-variable=prefix="$work/installed" --cflags --libs qelmodb)
# shellcheck disable=SC2086
"$compiler" -std=c++20 ${CLIENT_FLAGS:-} "$source/examples/client/client.cpp" $flags \
  -Wl,-rpath,"$(dirname "$pc")" -o "$work/client_pc"
"$work/client_pc" "$work/device2.bxd" >"$work/printed"
diff "$work/expected" "$work/printed"
