#!/bin/sh
# SPDX-FileCopyrightText: The qelmodb authors
# SPDX-License-Identifier: Apache-2.0

# What the builds for two systems write, each reads from the other: the same device in every form, text byte for byte.
#
#   check_exchange.sh TOOL_HERE TOOL_THERE EMULATOR
set -eu
here=$1
there=$2
emulator=$3
[ -x "$here" ] || { echo "build the tool of this system first: $here"; exit 1; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir here there

there() { "$emulator" "$there" "$@"; }

# The files of one tool, each named after its form.
#   write_all FOLDER TOOL...
write_all() {
  folder=$1
  shift
  for form in text binary compressed; do
    "$@" generate "$folder/$form.bxd" --form $form --rows 12 --columns 14 --wires 40
  done
  for form in text binary; do
    "$@" generate "$folder/$form.bxg" --form $form --rows 12 --columns 14 --wires 40
  done
  "$@" generate "$folder/packed.bxd.gz" --form text --rows 12 --columns 14 --wires 40
}
write_all here "$here" >/dev/null
write_all there there >/dev/null

for file in text.bxd text.npd text.bxg binary.bxg; do
  cmp "here/$file" "there/$file"
done
for file in $(ls here | grep -v 'npd$'); do
  echo "$file"
  "$here" check "there/$file"
  "$here" diff --summary "here/$file" "there/$file"
  there check "here/$file"
  there diff --summary "here/$file" "there/$file"
done
# Across the forms, too: a form that both misread in the same way would compare equal with itself.
"$here" diff --summary here/text.bxd there/compressed.bxd
there diff --summary there/text.bxd here/compressed.bxd
