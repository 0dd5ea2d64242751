// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// From the files of a device to its grid: data file, description beside it, and tiles that leave places free.
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "builders.h"
#include "exposed.h"
#include "grid_tiles.h"

namespace {

using test::cells_of;

const char* clb_tiles[] = {"CLB", nullptr};

class DeviceGrid : public testing::Test {
 protected:
  DeviceGrid() : old_cache_(np_devcache), old_place_(std::filesystem::current_path()) {
    np_devcache = &cache_;
    PM_SPEC::setdatadir(folder_.name().c_str());
    std::filesystem::current_path(folder_.path());
    // Three columns and three rows; one place is free, a tall tile fills two, and a column and a row stay empty.
    tile("CLB_a", 0, 20, 9, 29);
    tile("CLB_b", 10, 20, 19, 29);
    tile("CLB_c", 0, 0, 9, 9);
    tile("CLB_d", 30, 0, 39, 9);
    tile("CLB_e", 10, 0, 19, 20);
    tile("RAM", 30, 20, 39, 29);
    test::write_file(folder_.file("DEV.npd"), "NP_DEVICE:1\nrows 3 0 10 20 30\ncolumns 4 0 10 20 30 40\n");
  }

  ~DeviceGrid() override {
    std::filesystem::current_path(old_place_);
    PM_SPEC::setdatadir(nullptr);
    np_devcache = old_cache_;
  }

  void tile(const char* name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
    test::add_wire(*test::add(made_, name, x1, y1, x2, y2), "W", x1, y1);
  }

  NP_DEVCACHE cache_;
  NP_DEVCACHE* old_cache_;
  std::filesystem::path old_place_;
  test::temporary_folder folder_;
  BX_DB made_{"DEV", 0, 0, 40, 30};
};

TEST_F(DeviceGrid, OfALoadedDeviceIsPlacedByItsDescription) {
  for (const bool ascii : {true, false}) {
    ASSERT_EQ(made_.dump(pm_open("DEV"), ascii), 1);
    BX_DB loaded;
    ASSERT_EQ(loaded.load(pm_open("DEV")), 1);
    ASSERT_NE(loaded.getdevice(), nullptr);
    EXPECT_EQ(cells_of(*loaded.getgrid(clb_tiles)), "CLB_a CLB_b -|- CLB_e -|CLB_c - CLB_d") << ascii;
  }
}

TEST_F(DeviceGrid, OfTheSameTilesWithoutADescriptionIsNone) {
  ASSERT_EQ(made_.dump("DEV.bxd", true), 1);
  BX_DB loaded;
  ASSERT_EQ(loaded.load("DEV.bxd"), 1);
  std::string why;
  EXPECT_EQ(qelmodb::make_grid(loaded, clb_tiles, qelmodb::tiles::with_wires, why), nullptr);
  EXPECT_EQ(why, "the 5 tiles do not fill their rows, and there is no device that tells their places");
}

TEST_F(DeviceGrid, OfAGridFileIsPlacedByTheDescriptionToo) {
  for (const bool ascii : {true, false}) {
    ASSERT_EQ(made_.dumpgrid(pm_open("DEV"), ascii), 1);
    BX_DB loaded;
    ASSERT_EQ(loaded.loadgrid(pm_open("DEV")), 1);
    std::string why;
    EXPECT_EQ(qelmodb::make_grid(loaded, clb_tiles, qelmodb::tiles::with_wires, why), nullptr);
    const auto grid = qelmodb::make_grid(loaded, clb_tiles, qelmodb::tiles::with_or_without_wires, why);
    ASSERT_NE(grid, nullptr) << why;
    EXPECT_EQ(cells_of(*grid), "CLB_a CLB_b -|- CLB_e -|CLB_c - CLB_d") << ascii;
  }
}

TEST_F(DeviceGrid, DeviceMadeOfTheTilesHasTheirLowerAndLeftEdges) {
  std::string why;
  const auto device = qelmodb::device_of_tiles(made_, clb_tiles, qelmodb::tiles::with_wires, why);
  ASSERT_NE(device, nullptr) << why;
  ASSERT_TRUE(device->write("made.npd", why)) << why;
  EXPECT_EQ(test::read_file("made.npd"), "NP_DEVICE:1\nrows 2 0 20 29\ncolumns 3 0 10 30 39\n");
  made_.setdevice(device.get());
  EXPECT_EQ(cells_of(*made_.getgrid(clb_tiles)), "CLB_a CLB_b -|CLB_c CLB_e CLB_d");
}

TEST_F(DeviceGrid, DeviceMadeOfTilesWithoutExtentHasALineForThem) {
  auto made_of = [](bx_long x, bx_long y) {
    BX_DB db("D", 0, 0, 1, 1);
    test::put_tile(db, "t", x, y, x, y);
    std::string why;
    const auto device = qelmodb::device_of_tiles(db, test::every_tile, qelmodb::tiles::with_wires, why);
    return device != nullptr && device->rowof({x, y}) == 0 && device->colof({x, y}) == 0;
  };
  EXPECT_TRUE(made_of(3, 4));
  EXPECT_TRUE(made_of(INT32_MIN, INT32_MIN));
  EXPECT_TRUE(made_of(INT32_MAX, INT32_MAX));
}

TEST_F(DeviceGrid, DeviceCannotBeMadeOfNoTilesOrTooManyLines) {
  std::string why;
  BX_DB db("D", 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::device_of_tiles(db, test::every_tile, qelmodb::tiles::with_wires, why), nullptr);
  EXPECT_EQ(why, "no instance is a tile");
  for (bx_long i = 0; i < 32768; ++i) test::put_tile(db, "t", i, 0, i + 1, 1);
  EXPECT_EQ(qelmodb::device_of_tiles(db, test::every_tile, qelmodb::tiles::with_wires, why), nullptr);
  EXPECT_EQ(why, "the tiles begin at 1 heights and 32768 left edges; a device has at most 32767 rows and columns");
}

/// Wherever each tile of a random set that keeps to a grid of places stands, the device made of the set finds it.
TEST_F(DeviceGrid, DeviceMadeOfTilesPlacesEveryOneOfThem) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    BX_DB db("D", 0, 0, 1, 1);
    std::size_t tiles = 0;
    for (bx_long place = 0; place < 40; ++place) {
      if (random() % 3 == 0) continue;
      const bx_long x = place % 8 * 10;
      const bx_long y = place / 8 * 10;
      test::put_tile(db, "t", x, y, x + 9, y + 9);
      ++tiles;
    }
    std::string why;
    const auto device = qelmodb::device_of_tiles(db, test::every_tile, qelmodb::tiles::with_wires, why);
    ASSERT_NE(device, nullptr);
    db.setdevice(device.get());
    const auto grid = qelmodb::make_grid(db, test::every_tile, qelmodb::tiles::with_wires, why);
    ASSERT_NE(grid, nullptr) << why;
    std::size_t found = 0;
    for (short row = 0; row < grid->getnumrows(); ++row) {
      for (short column = 0; column < grid->getnumcols(); ++column) {
        found += grid->getinstance(row, column) != nullptr ? 1U : 0U;
      }
    }
    ASSERT_EQ(found, tiles);
  }
}

}  // namespace
