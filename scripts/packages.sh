# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Sourced by the scripts beside it: installs the Debian packages that are missing.
#   need_packages NAME...
need_packages() {
  missing=""
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing="$missing $package"
  done
  [ -n "$missing" ] || return 0
  echo "installing:$missing"
  as_root=""
  [ "$(id -u)" = 0 ] || as_root=sudo
  $as_root apt-get update -qq
  # shellcheck disable=SC2086
  DEBIAN_FRONTEND=noninteractive $as_root apt-get install -y -qq --no-install-recommends $missing >/dev/null
}

build_packages="g++ cmake ninja-build pkg-config libcli11-dev libfmt-dev nlohmann-json3-dev zlib1g-dev libzstd-dev\
 libcairo2-dev"
test_packages="libgtest-dev libbenchmark-dev gzip zstd"
windows_packages="g++-mingw-w64-x86-64-posix libz-mingw-w64-dev googletest wine wine64"
fuzz_packages="clang libclang-rt-14-dev"
bench_packages="libbenchmark-dev libboost-dev libboost-serialization-dev libsqlite3-dev libflatbuffers-dev\
 flatbuffers-compiler libzstd-dev"
