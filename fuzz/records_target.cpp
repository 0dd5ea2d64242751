// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Reads single records from a stream in memory, as clients with files of their own do. The first byte says which.
#include "fuzzing.h"
#include "qelmotmplt.h"

namespace {

// Reads the same kind of record until the stream gives no more, or enough was read.
template <class Record, class Read, class... Arguments>
void read_all(UT_PTRFILE& file, Read read, Arguments... arguments) {
  for (int i = 0; i < 1000 && file.bytesleft() > 0; ++i) {
    Record record(arguments...);
    if (read(record) == 0) return;
  }
}

void read_as(int kind, UT_PTRFILE& file) {
  switch (kind) {
    case 0:
      return read_all<BX_WIRE>(file, [&](BX_WIRE& wire) { return wire.readme(&file, '.'); });
    case 1:
      return read_all<BX_WIRE>(file, [&](BX_WIRE& wire) { return wire.readme(static_cast<UT_STREAM*>(&file), '.'); });
    case 2:
      BX_WIRE::resetCurrentXY();
      return read_all<BX_WIRE>(file, [&](BX_WIRE& wire) { return wire.readmeCompressed(&file, '.'); });
    case 3:
      return read_all<BX_INSTANCE>(
          file, [&](BX_INSTANCE& inst) { return inst.readme(&file); }, nullptr, 0, 0, 0, 0);
    case 4:
      return read_all<BX_INSTANCE>(
          file, [&](BX_INSTANCE& inst) { return inst.readme(static_cast<UT_STREAM*>(&file)); }, nullptr, 0, 0, 0, 0);
    case 5:
      return read_all<ASS_TEMPLATE>(file, [&](ASS_TEMPLATE& layout) { return layout.readme(&file); });
    case 6:
      return read_all<BASIC_ASS_TEMPLATE>(file, [&](BASIC_ASS_TEMPLATE& set) { return set.readme_sm(&file); });
    default:
      return read_all<WIRE_TEMPLATE_SM>(file, [&](WIRE_TEMPLATE_SM& wire) { return wire.readme(&file); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  if (size == 0) return 0;
  UT_MEMFILE file(data + 1, size - 1);
  fuzz::ends_process([&] { read_as(data[0] % 8, file); });
  return 0;
}
