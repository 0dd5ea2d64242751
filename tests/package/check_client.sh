#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Builds the example client against copies of the library, and compares what the client prints: once by its CMake
# package against what is installed into an empty folder, and once by pkg-config against what is in the archive.
#
#   check_client.sh BUILD_FOLDER SOURCE_FOLDER COMPILER [TOOLCHAIN_FILE EMULATOR]
set -eu
build=$1
source=$2
compiler=$3
toolchain=${4:-}
emulator=${5:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

cat >"$work/expected" <<'END'
at (5, 25): TILE_2
its wire E1: (9, 23)
switch matrices: 4
restored from templates: the same
END

# Runs a client with the DLLs of a copy.
#   run_client COPY PROGRAM
run_client() {
  # shellcheck disable=SC2086
  (cd "$work" && WINEPATH=$1/bin $emulator "$2" device.bxd >printed)
  tr -d '\r' <"$work/printed" | diff "$work/expected" -
}

cmake --install "$build" --prefix "$work/installed" >"$work/install.log"
package=$(dirname "$(find "$work/installed" -name qelmodbConfig.cmake)")
cmake -S "$source/examples/client" -B "$work/client" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
  -DCMAKE_CXX_FLAGS="${CLIENT_FLAGS:-}" -Dqelmodb_DIR="$package" \
  ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} >"$work/configure.log"
cmake --build "$work/client" >"$work/build.log"
run_client "$work/installed" "$(find "$work/client" -maxdepth 1 -type f "(" -name client -o -name client.exe ")")"

(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/archives" >"$work/pack.log")
mkdir "$work/unpacked"
(cd "$work/unpacked" && cmake -E tar xf "$work"/archives/qelmodb-*.*)
copy=$(dirname "$(find "$work/unpacked" -name include)")
pc=$(dirname "$(find "$copy" -name qelmodb.pc)")
# The copy lies elsewhere than the prefix it was configured for.
flags=$(PKG_CONFIG_PATH=$pc pkg-config --define-variable=prefix="$copy" --cflags --libs qelmodb)
# shellcheck disable=SC2086
"$compiler" -std=c++20 ${CLIENT_FLAGS:-} "$source/examples/client/client.cpp" $flags \
  -Wl,-rpath,"$(dirname "$pc")" -o "$work/client_pc.exe"
run_client "$copy" "$work/client_pc.exe"

# The tool comes with what it needs, too.
tool=$(find "$copy" -name bxdb -o -name bxdb.exe)
[ -z "$tool" ] || (cd "$work" && $emulator "$tool" check device.bxd >"$work/checked") || {
  cat "$work/checked"
  exit 1
}
