// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Makes a device of one column of tiles, saves it in binary and compressed form, loads it, and asks it a few questions.
#include <qelmocompress.h>
#include <qelmodb.h>
#include <qelmoext.h>

#include <cstdio>
#include <string>

namespace {

// A tile of 10 x 10 with its switch matrix and two wires.
BX_INSTANCE* make_tile(const std::string& name, bx_long x, bx_long y) {
  auto* tile = new BX_INSTANCE(name.c_str(), x, y, x + 9, y + 9);
  auto* matrix = new BX_INSTANCE("BASIC_ASS", x, y, x + 4, y + 9);
  const BX_WIRE east("E1", x + 9, y + 3);
  const BX_WIRE north("N1", x + 2, y + 9);
  matrix->addwire(&east);
  matrix->addwire(&north);
  tile->addinstance(matrix);
  return tile;
}

// Writes a compressed file, unless anything of the device would not come back from it.
bool save_compressed(BX_DB& device, const char* file) {
  qelmodb::intern_root_name(device);
  if (!qelmodb::compression_objections(device).empty()) return false;
  device.compress();
  return qelmodb::find_compression_losses(device).total() == 0 && device.dumpcompress(file, false) != 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string file = argc > 1 ? argv[1] : "device.bxd";

  BX_DB device("DEVICE", 0, 0, 9, 39);
  for (bx_long row = 0; row < 4; ++row) {
    device.addinstance(make_tile("TILE_" + std::to_string(row), 0, row * 10));
  }
  if (device.dump(file.c_str(), false) == 0) {
    std::fprintf(stderr, "%s\n", ut_file->geterror());
    return 1;
  }

  BX_DB loaded;
  if (!qelmodb::check_file(file.c_str(), qelmodb::content::database).loadable() || loaded.load(file.c_str()) == 0) {
    std::fprintf(stderr, "%s: cannot load\n", file.c_str());
    return 1;
  }
  const BX_INSTANCE* tile = loaded.getinstance(5, 25, nullptr);
  const BX_WIRE* wire = loaded.getwire(3, 25, "E1");
  if (tile == nullptr || wire == nullptr) return 1;
  std::printf("at (5, 25): %s\n", tile->getname());
  std::printf("its wire E1: (%d, %d)\n", wire->getnodex(), wire->getnodey());
  std::printf("switch matrices: %zu\n", qelmodb::find_instances(loaded, "BASIC_ASS").size());

  const std::string compressed = file + ".compressed";
  BX_DB restored;
  if (!save_compressed(device, compressed.c_str()) || restored.load(compressed.c_str()) == 0) {
    std::fprintf(stderr, "%s: cannot save or load\n", compressed.c_str());
    return 1;
  }
  const bool same = qelmodb::same_tree(device, restored, qelmodb::content::database);
  std::printf("restored from templates: %s\n", same ? "the same" : "another");
  return 0;
}
