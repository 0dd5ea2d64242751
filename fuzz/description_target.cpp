// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Reads device descriptions: a sound one gives a device that can be asked and written, any other a reason that names
// the file.
#include <unistd.h>

#include <fstream>

#include "fuzzing.h"
#include "np_device.h"

namespace {

/// A file in memory, where the system has such.
const std::string& scratch() {
  static const std::string name = "/dev/shm/qelmodb-fuzz-" + std::to_string(getpid()) + ".npd";
  return name;
}

struct scratch_remover {
  ~scratch_remover() { unlink(scratch().c_str()); }
};
const scratch_remover at_exit;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  std::ofstream(scratch(), std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  std::string why;
  const auto device = NP_TABLEDEVICE::read(scratch().c_str(), why);
  if (device == nullptr) {
    FUZZ_REQUIRE(why.find(scratch()) != std::string::npos);
    return 0;
  }
  FUZZ_REQUIRE(device->maxrow() >= 0 && device->maxrow() < NP_TABLEDEVICE::max_lines);
  for (const bx_long place : {INT32_MIN, -1, 0, 7, INT32_MAX}) {
    device->rowof({place, place});
    device->colof({place, place});
  }
  FUZZ_REQUIRE(device->write(scratch().c_str(), why));
  const auto again = NP_TABLEDEVICE::read(scratch().c_str(), why);
  FUZZ_REQUIRE(again != nullptr && again->maxrow() == device->maxrow() && again->maxcol() == device->maxcol());
  return 0;
}
