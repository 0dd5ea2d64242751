#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# A project that adds this one by add_subdirectory gets the library alone: no tool, no tests, nothing to install or to
# pack, and no variable in its cache that has not the library's name. A client in an older language by default is
# compiled in the one that the headers need.
#
#   check_subproject.sh SOURCE_FOLDER COMPILER [TOOLCHAIN_FILE EMULATOR DLL_FOLDER]
set -eu
source=$1
compiler=$2
toolchain=${3:-}
emulator=${4:-}
dlls=${5:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir "$work/parent"
cat >"$work/parent/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.22)
project(parent VERSION 7.0 LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
option(WITH_LIBRARY "")
enable_testing()
if(WITH_LIBRARY)
  add_subdirectory($source library)
  add_executable(client $source/examples/client/client.cpp)
  target_link_libraries(client PRIVATE qelmodb::qelmodb)
endif()
END

# Configures the parent.
#   configure FOLDER OPTION...
configure() {
  folder=$1
  shift
  cmake -S "$work/parent" -B "$work/$folder" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
    ${toolchain:+"-DCMAKE_TOOLCHAIN_FILE=$toolchain"} "$@" >"$work/configure.log" || {
    cat "$work/configure.log"
    exit 1
  }
}
# What a cache holds beside what is named after a project.
cached() {
  sed -n "s|$work/$1|BUILD|; /^[A-Za-z_].*:.*=/p" "$work/$1/CMakeCache.txt" |
    grep -viE '^(qelmodb_|parent_|WITH_LIBRARY:|CMAKE_NUMBER_OF_MAKEFILES:)' | sort
}
fail() {
  echo "$1"
  exit 1
}

configure alone -DWITH_LIBRARY=OFF
# Its sources a few at a time: it compiles faster.
configure with -DWITH_LIBRARY=ON -DQELMODB_UNITE=ON
cached alone >"$work/cached_alone"
cached with >"$work/cached_with"
diff "$work/cached_alone" "$work/cached_with" || fail "the library changes the cache of a project that adds it"

cmake --build "$work/with" >"$work/build.log" || { cat "$work/build.log"; exit 1; }
programs=$(find "$work/with" \( -name 'bxdb*' -o -name '*_tests*' \) -type f)
[ -z "$programs" ] || fail "there is more than the library: $programs"
ctest --test-dir "$work/with" -N | grep -q 'Total Tests: 0' || fail "there are tests"
[ ! -e "$work/with/CPackConfig.cmake" ] || fail "there is an archive to make"
cmake --install "$work/with" --prefix "$work/installed" >"$work/install.log"
[ ! -e "$work/installed" ] || fail "there is something to install"

program=$(find "$work/with" -maxdepth 1 -type f \( -name client -o -name client.exe \))
# shellcheck disable=SC2086
(cd "$work" && WINEPATH=$dlls $emulator "$program" device.bxd) | grep 'switch matrices: 4' ||
  fail "the client does not run"
