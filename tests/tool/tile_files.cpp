// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "tile_files.h"

#include <algorithm>
#include <utility>

namespace test {
namespace {

std::string rectangle(const tile_box& tile) {
  return "(" + std::to_string(tile.xmin) + ", " + std::to_string(tile.ymin) + ") (" + std::to_string(tile.xmax) + ", " +
         std::to_string(tile.ymax) + ")";
}

}  // namespace

std::string text_of_tiles(std::vector<tile_box> tiles) {
  std::stable_sort(tiles.begin(), tiles.end(), [](const tile_box& a, const tile_box& b) {
    return std::pair(a.xmin, a.ymin) < std::pair(b.xmin, b.ymin);
  });
  tile_box root{"dev", 0, 0, 0, 0};
  for (const tile_box& tile : tiles) {
    root.xmin = std::min(root.xmin, tile.xmin);
    root.ymin = std::min(root.ymin, tile.ymin);
    root.xmax = std::max(root.xmax, tile.xmax);
    root.ymax = std::max(root.ymax, tile.ymax);
  }
  std::string text = "BX_DB:A\nBX_INSTANCE: \"dev\" " + rectangle(root) + "\n0\n" + std::to_string(tiles.size()) + "\n";
  for (const tile_box& tile : tiles) {
    text += "BX_INSTANCE: \"" + tile.name + "\" " + rectangle(tile) + "\n1\nBX_WIRE:  \"W\" (" +
            std::to_string(tile.xmin) + ", " + std::to_string(tile.ymin) + ")\n0\n";
  }
  return text;
}

std::vector<tile_box> six_tiles() {
  return {{"IO_W16", 0, 0, 100, 100},       {"IO_W17", 0, 100, 100, 200},     {"CLB_X1Y0", 100, 0, 200, 100},
          {"CLB_X1Y1", 100, 100, 200, 200}, {"CLB_X2Y1", 200, 100, 300, 200}, {"CLB_X2Y0", 200, 0, 300, 100}};
}

std::vector<tile_box> five_tiles() {
  std::vector<tile_box> tiles = six_tiles();
  tiles.pop_back();
  return tiles;
}

std::string description_of_six() { return "NP_DEVICE:1\nrows 2 0 100 200\ncolumns 3 0 100 200 300\n"; }

}  // namespace test
