#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# The toolchain file for Windows by itself, without the preset: the tool is configured with packages of that system
# alone, whatever this machine has and says of its packages. Headers that are the same on all systems are shown to the
# compiler from a folder of the build. Skipped (status 77) where the compiler or its zlib is not installed.
#
#   check_cross_packages.sh SOURCE_FOLDER
set -eu
source=$1
target=/usr/x86_64-w64-mingw32
command -v x86_64-w64-mingw32-g++-posix >/dev/null || exit 77
[ -e "$target/include/zlib.h" ] || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A package of this machine that its own builds would find.
mkdir "$work/here"
cat >"$work/here/libzstd.pc" <<END
Name: libzstd
Description: of this machine
Version: 99
Cflags: -I$work/here
END
# Configures with further options.
#   configure FOLDER OPTION...
configure() {
  folder=$1
  shift
  PKG_CONFIG_PATH=$work/here cmake -S "$source" -B "$work/$folder" -G Ninja \
    -DCMAKE_TOOLCHAIN_FILE="$source/cmake/mingw-w64.cmake" "$@" >"$work/$folder.log" 2>&1
}
configure build || {
  cat "$work/build.log"
  exit 1
}

# The folders of headers that are outside of the sources, the build and the target.
strangers=$(grep -oE '(-I|-isystem) ?[^ ]+' "$work/build/compile_commands.json" | sed -E 's/^(-I|-isystem) ?//' | sort -u |
  grep -vE "^($source|$work/build|$target)/" || true)
[ -z "$strangers" ] || {
  printf 'compiled against what is not for Windows:\n%s\n' "$strangers"
  exit 1
}
grep -q "borrowed-headers" "$work/build/compile_commands.json" || {
  echo "no headers are borrowed"
  exit 1
}

# What is asked for and is not there is said, with the way on.
if configure demanding -DQELMODB_ZSTD=ON; then
  [ -e "$target/include/zstd.h" ] || {
    echo "zstd was found, but not for Windows"
    exit 1
  }
else
  grep -q -- '-DQELMODB_ZSTD=OFF' "$work/demanding.log" || {
    cat "$work/demanding.log"
    exit 1
  }
fi
