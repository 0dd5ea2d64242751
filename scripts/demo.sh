#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# Installs what is missing, builds the library and its tool, and takes a device through its life: made, saved
# in each form, checked, loaded, queried, compared, drawn. What it writes goes to build/demo.
#
#   scripts/demo.sh [COLUMNS ROWS WIRES]     100 100 100 when none is given
set -eu
cd "$(dirname "$0")/.."
. scripts/packages.sh
# shellcheck disable=SC2086
need_packages $build_packages

cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/demo -j "$(nproc)"
bxdb=build/demo/bin/bxdb
device=build/demo/device
rm -f $device*

run() {
  echo
  echo "\$ $*"
  "$@"
}
run $bxdb --version
run $bxdb generate $device.bxd --columns "${1:-100}" --rows "${2:-100}" --wires "${3:-100}"
run $bxdb convert $device.bxd $device-text.bxd --form text
run $bxdb convert $device-text.bxd $device-back.bxd.zst --form binary
run $bxdb check $device-back.bxd.zst
run $bxdb convert $device-back.bxd.zst $device-compressed.bxd --form compressed
run $bxdb check $device-compressed.bxd
run $bxdb explain $device-compressed.bxd --most 5
for file in $device.bxd $device-text.bxd $device-back.bxd.zst $device-compressed.bxd; do
  run $bxdb info $file
done
run $bxdb diff $device.bxd $device-back.bxd.zst
run $bxdb diff $device.bxd $device-compressed.bxd
run $bxdb at $device.bxd 500 500
# Where the wire of this name begins in the first tile that has one, when the device has wires enough.
node=$($bxdb find $device.bxd E1BEG0 --wires | sed -n '1s/.*(\(.*\), \(.*\))/\1 \2/p') || node=
# shellcheck disable=SC2086
[ -z "$node" ] || run $bxdb node $device.bxd $node
echo '{"at": [500, 500]}' >$device.question
run $bxdb query $device.bxd <$device.question
# The lowest row inside the I/O ring; its first matrix stands in any device.
run $bxdb grid $device.bxd BASIC_ASS --row "$((${2:-100} - 2))" --col 1
run $bxdb grid $device.bxd BASIC_ASS --png $device.png
echo
ls -l $device*
