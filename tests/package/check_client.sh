#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Builds the example client against copies of the library, and compares what the client prints: by its CMake package
# and by pkg-config against what is installed into an empty folder, by pkg-config once more when that was moved, and
# against what is in the archive. None of these lies at the prefix that the build was configured for.
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

# Builds the client by what qelmodb.pc of a copy says, and runs it.
#   check_pkg_config COPY
check_pkg_config() {
  pc=$(dirname "$(find "$1" -name qelmodb.pc)")
  flags=$(PKG_CONFIG_PATH=$pc pkg-config --cflags --libs qelmodb)
  # shellcheck disable=SC2086
  "$compiler" -std=c++20 ${CLIENT_FLAGS:-} "$source/examples/client/client.cpp" $flags \
    -Wl,-rpath,"$(dirname "$pc")" -o "$work/client_pc.exe"
  run_client "$1" "$work/client_pc.exe"
}
check_pkg_config "$work/installed"
mkdir "$work/elsewhere"
mv "$work/installed" "$work/elsewhere/moved"
check_pkg_config "$work/elsewhere/moved"

(cd "$work" && cpack --config "$build/CPackConfig.cmake" -B "$work/archives" >"$work/pack.log")
mkdir "$work/unpacked"
(cd "$work/unpacked" && cmake -E tar xf "$work"/archives/qelmodb-*.*)
copy=$(dirname "$(find "$work/unpacked" -name include)")
check_pkg_config "$copy"

# The tool comes with what it needs, too.
tool=$(find "$copy" -name bxdb -o -name bxdb.exe)
[ -z "$tool" ] || (cd "$work" && $emulator "$tool" check device.bxd >"$work/checked") || {
  cat "$work/checked"
  exit 1
}
