// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_grid.h"

#include <gtest/gtest.h>

#include <new>

#include "builders.h"
#include "exposed.h"
#include "grid_tiles.h"

namespace {

using test::cells_of;
using test::even_device;
using test::every_tile;
using test::put_block;
using test::put_tile;

class Grid : public testing::Test {
 protected:
  /// Equal tiles of 10 x 10 at these places; two letters name each.
  void put(const char* name, bx_long column, bx_long row) {
    put_tile(db, name, column * 10, row * 10, column * 10 + 10, row * 10 + 10);
  }

  void put_full_rectangle() {
    put("c", 0, 0);
    put("a", 0, 1);
    put("d", 1, 0);
    put("b", 1, 1);
  }

  /// Three of four places; the upper left one is free.
  void put_ragged_set() {
    put("a", 0, 0);
    put("b", 1, 0);
    put("c", 1, 1);
  }

  std::string cells(const char* const* prefixes = every_tile) { return cells_of(BX_GRID(&db, prefixes)); }

  /// Why there is no grid.
  std::string reason(qelmodb::tiles which = qelmodb::tiles::with_wires) {
    std::string why;
    EXPECT_EQ(qelmodb::make_grid(db, every_tile, which, why), nullptr);
    return why;
  }

  BX_DB db{"D", 0, 0, 100, 100};
};

TEST_F(Grid, OfAFullRectangleHoldsOneTilePerCellFromTheTopLeftAndAsksNoDevice) {
  put_full_rectangle();
  even_device device(9, 9, 10);
  db.setdevice(&device);
  const BX_GRID grid(&db, every_tile);
  EXPECT_EQ(cells_of(grid), "a b|c d");
  EXPECT_EQ(grid.getnumrows(), 2);
  EXPECT_EQ(grid.getnumcols(), 2);
  EXPECT_EQ(grid.getnamewidth(), 1);
  EXPECT_TRUE(device.points.empty());
}

TEST_F(Grid, OneTileShortIsPlacedByTheDevice) {
  put_ragged_set();
  even_device device(2, 2, 10);
  db.setdevice(&device);
  EXPECT_EQ(cells(), "- c|a b");
  EXPECT_EQ(device.points.size(), 3U);
}

TEST_F(Grid, DeviceDecidesEveryCellWhateverTheGeometry) {
  put_ragged_set();
  class everything_in_one_place : public NP_DEVICE {
   public:
    bx_long maxrow() override { return 5; }
    bx_long maxcol() override { return 7; }
    bx_long rowof(const UT_POINT&) override { return 3; }
    bx_long colof(const UT_POINT&) override { return 4; }
  } device;
  db.setdevice(&device);
  EXPECT_EQ(cells(), "c+a+b");
}

TEST_F(Grid, TilesInOneDeviceCellShareItsListInTheirOrder) {
  put_tile(db, "low", 0, 0, 8, 4);
  put_tile(db, "right", 5, 5, 9, 9);
  put_tile(db, "left", 0, 5, 4, 9);
  put("far", 2, 0);
  put("other", 3, 0);
  even_device device(1, 4, 10);
  db.setdevice(&device);
  EXPECT_EQ(cells(), "left+right+low far other");
}

TEST_F(Grid, DeviceRowsAndColumnsWithoutTilesVanishAndHolesStay) {
  put("a", 1, 7);
  put("b", 6, 7);
  put("c", 4, 2);
  even_device device(9, 9, 10);
  db.setdevice(&device);
  EXPECT_EQ(cells(), "a - b|- c -");
}

TEST_F(Grid, CentresAreHalvedTowardsZeroFromTheLowerLeftCorner) {
  put_tile(db, "a", -7, -9, -2, -2);
  put_tile(db, "b", 1, 1, 6, 4);
  put_tile(db, "c", 8, 1, 8, 4);
  class asked : public even_device {
   public:
    asked() : even_device(9, 9, 10) {}
    bx_long rowof(const UT_POINT& point) override {
      points.push_back(point);
      return 0;
    }
    bx_long colof(const UT_POINT&) override { return 0; }
  } device;
  db.setdevice(&device);
  EXPECT_EQ(cells(), "b+c+a");
  std::string centres;
  for (const UT_POINT& point : device.points) centres += neoform("(%d, %d) ", point.x, point.y);
  EXPECT_EQ(centres, "(3, 2) (8, 2) (-5, -6) ");
}

TEST_F(Grid, InstancesWithChildrenOrWithoutWiresNeverEnter) {
  BX_INSTANCE* parent = put_tile(db, "T_parent", 50, 50, 60, 60);
  put_tile(*parent, "T_inner", 0, 0, 10, 10);
  put_block(db, "T_bare", 20, 0, 30, 10);
  const char* prefixes[] = {"T_", nullptr};
  EXPECT_EQ(cells(prefixes), "T_inner");
}

TEST_F(Grid, PrefixesStandAtTheStartOfTheNameAndCountByCase) {
  put_tile(db, "CLB_1", 0, 0, 10, 10);
  put_tile(db, "xCLB", 10, 0, 20, 10);
  put_tile(db, "clb", 20, 0, 30, 10);
  put_tile(db, "RAM", 30, 0, 40, 10);
  put_tile(db, "CL", 40, 0, 50, 10);
  const char* prefixes[] = {"RAM", "CLB", nullptr};
  EXPECT_EQ(cells(prefixes), "CLB_1 RAM");
}

TEST_F(Grid, NullChildOfTheDatabaseEndsTheSearchAndOneDeeperDoesNot) {
  BX_INSTANCE* block = put_block(db, "block", 0, 0, 10, 10);
  BX_INSTANCE* none = nullptr;
  block->instances.a_add(&none);
  put_tile(*block, "a", 0, 0, 10, 10);
  db.instances.a_add(&none);
  put_tile(db, "b", 10, 0, 20, 10);
  EXPECT_EQ(cells(), "a");
}

TEST_F(Grid, TilesWithoutNameArePlacedByTheEmptyPrefix) {
  put_tile(db, nullptr, 0, 0, 10, 10);
  put_tile(db, "b", 10, 0, 20, 10);
  EXPECT_EQ(cells(), " b");
}

TEST_F(Grid, OneColumnWithEqualRightEdgesIsOneRow) {
  put_tile(db, "low", 0, 0, 10, 10);
  put_tile(db, "high", 0, 10, 10, 20);
  EXPECT_EQ(cells(), "high low");
}

TEST_F(Grid, RowThatBeginsAtTheRightEdgeWhereTheOneAboveEndsCountsAsItsContinuation) {
  put("a", 0, 1);
  put("b", 0, 0);
  put("c", 1, 0);
  EXPECT_EQ(cells(), "a b c");
}

TEST_F(Grid, SpansThatOnlyTouchDoNotOverlap) {
  put_tile(db, "a", 10, 10, 20, 20);
  put_tile(db, "b", 0, 0, 10, 10);
  EXPECT_EQ(cells(), "a|b");
}

TEST_F(Grid, ValidityIsTestedAgainstRowsAndColumns) {
  put_full_rectangle();
  const BX_GRID grid(&db, every_tile);
  EXPECT_EQ(grid.isvalid(0, 0), 1);
  EXPECT_EQ(grid.isvalid(1, 1), 1);
  EXPECT_EQ(grid.isvalid(-1, 0), 0);
  EXPECT_EQ(grid.isvalid(0, -1), 0);
  EXPECT_EQ(grid.isvalid(0, 2), 0);
  EXPECT_EQ(grid.isvalid(2, 0), 0);
}

TEST_F(Grid, FirstInstanceOfACellIsNullWhereThereIsNone) {
  put_ragged_set();
  even_device device(2, 2, 10);
  db.setdevice(&device);
  const BX_GRID grid(&db, every_tile);
  EXPECT_STREQ(grid.getinstance(1, 1)->name, "b");
  EXPECT_EQ(grid.getinstances(0, 0), nullptr);
  EXPECT_EQ(grid.getinstance(0, 0), nullptr);
  grid.getinstances(1, 1)->empty();
  EXPECT_EQ(grid.getinstance(1, 1), nullptr) << "a list without elements";
}

TEST_F(Grid, OfADatabaseIsBuiltOnceWhateverIsAskedForLater) {
  put_full_rectangle();
  const char* first[] = {"a", "b", nullptr};
  const char* second[] = {"c", nullptr};
  BX_GRID* grid = db.getgrid(first);
  EXPECT_EQ(cells_of(*grid), "a b");
  put("b2", 2, 1);
  EXPECT_EQ(db.getgrid(second), grid);
  EXPECT_EQ(db.getgrid(nullptr), grid);
  EXPECT_EQ(db.grid, grid);
  EXPECT_EQ(cells_of(*grid), "a b");
}

TEST_F(Grid, IsDroppedWhenAnotherFileIsLoaded) {
  test::temporary_folder folder;
  put_full_rectangle();
  ASSERT_EQ(db.dump(folder.file("d.bxd").c_str(), true), 1);
  ASSERT_NE(db.getgrid(const_cast<const char**>(every_tile)), nullptr);
  DARRAY_BX_INSTPTR* list = db.grid->getinstances(0, 0);
  ASSERT_EQ(db.load("no such file"), 0);
  EXPECT_NE(db.grid, nullptr);
  ASSERT_EQ(db.load(folder.file("d.bxd").c_str()), 1);
  EXPECT_EQ(db.grid, nullptr);
  EXPECT_EQ(cells_of(*db.getgrid(const_cast<const char**>(every_tile))), "a b|c d");
  EXPECT_EQ(list->getcount(), 1) << "lists stay with the database";
}

TEST_F(Grid, ListsOutliveTheirGrid) {
  put_full_rectangle();
  DARRAY_BX_INSTPTR* list = nullptr;
  {
    const BX_GRID grid(&db, every_tile);
    list = grid.getinstances(0, 1);
  }
  EXPECT_STREQ((*list)[0]->name, "b");
}

TEST_F(Grid, AssignmentSharesTheTable) {
  put_full_rectangle();
  const BX_GRID grid(&db, every_tile);
  test::recording_manager returns;
  const test::substitute in_place(returns);
  BX_DB empty;
  // Never destroyed: only one of two that share a table may be.
  alignas(BX_GRID) unsigned char storage[sizeof(BX_GRID)];
  BX_GRID& shared = *new (storage) BX_GRID(&empty, every_tile);
  EXPECT_EQ(shared.getnumrows(), 0);
  shared = grid;
  EXPECT_EQ(shared.getinstances(1, 1), grid.getinstances(1, 1));
  EXPECT_EQ(cells_of(shared), "a b|c d");
  EXPECT_EQ(shared.getnamewidth(), 1);
}

TEST_F(Grid, NamesOfAnyLengthCountIn16Bits) {
  put_tile(db, std::string(300, 'n').c_str(), 0, 0, 10, 10);
  put_tile(db, "b", 10, 0, 20, 10);
  EXPECT_EQ(BX_GRID(&db, every_tile).getnamewidth(), 300);
  put_tile(db, std::string(65537, 'n').c_str(), 20, 0, 30, 10);
  EXPECT_EQ(BX_GRID(&db, every_tile).getnamewidth(), 300);
}

// ---- why there is no grid

TEST_F(Grid, IsNoneWithoutTiles) {
  EXPECT_EQ(reason(), "no instance is a tile");
  put_block(db, "bare", 0, 0, 1, 1);
  EXPECT_EQ(reason(), "no instance is a tile");
  std::string why;
  const char* nothing[] = {nullptr};
  put("a", 0, 0);
  EXPECT_EQ(qelmodb::make_grid(db, nothing, qelmodb::tiles::with_wires, why), nullptr);
  EXPECT_EQ(qelmodb::make_grid(db, nullptr, qelmodb::tiles::with_wires, why), nullptr);
}

TEST_F(Grid, IsNoneOfARaggedSetWithoutADevice) {
  put_ragged_set();
  EXPECT_EQ(reason(), "the 3 tiles do not fill their rows, and there is no device that tells their places");
}

TEST_F(Grid, IsNoneWhereATileLiesOutsideOfTheDevice) {
  put_ragged_set();
  even_device low(1, 2, 10);
  db.setdevice(&low);
  EXPECT_EQ(reason(), "Device Error: c at (-1,1) is out of graph paper (1,2)");
  even_device narrow(2, 1, 10);
  db.setdevice(&narrow);
  EXPECT_EQ(reason(), "Device Error: c at (0,1) is out of graph paper (2,1)");
  even_device fitting(2, 2, 10);
  db.setdevice(&fitting);
  put("w", -1, 0);
  EXPECT_EQ(reason(), "Device Error: w at (1,-1) is out of graph paper (2,2)");
}

TEST_F(Grid, DeviceSizesAreCutTo16Bits) {
  put_ragged_set();
  even_device large(65538, 65538, 10);
  db.setdevice(&large);
  EXPECT_EQ(cells(), "- c|a b");
  even_device negative(40000, 2, 10);
  db.setdevice(&negative);
  EXPECT_EQ(reason(), "Device Error: c at (-25538,1) is out of graph paper (-25536,2)");
}

TEST_F(Grid, OfTheLargestDeviceCostsNoMoreThanItsTiles) {
  put("a", 0, 0);
  put("b", 1, 0);
  put_tile(db, "z", 327660, 327660, 327670, 327670);
  even_device device(32767, 32767, 10);
  db.setdevice(&device);
  EXPECT_EQ(cells(), "- - z|a b -");
}

TEST_F(Grid, DeviceThatAnswersAnythingIsSafe) {
  put_ragged_set();
  class hostile : public NP_DEVICE {
   public:
    bx_long maxrow() override { return top; }
    bx_long maxcol() override { return top; }
    bx_long rowof(const UT_POINT&) override { return row; }
    bx_long colof(const UT_POINT&) override { return column; }
    bx_long top = 0;
    bx_long row = 0;
    bx_long column = 0;
  } device;
  db.setdevice(&device);
  const bx_long values[] = {INT32_MIN, -65536, -32769, -1, 0, 1, 32766, 32767, 32768, 65535, 65536, INT32_MAX};
  int built = 0;
  for (const bx_long top : values) {
    for (const bx_long row : values) {
      for (const bx_long column : values) {
        device.top = top;
        device.row = row;
        device.column = column;
        std::string why;
        const auto grid = qelmodb::make_grid(db, every_tile, qelmodb::tiles::with_wires, why);
        const bx_long lines = static_cast<std::int16_t>(static_cast<std::uint32_t>(top) + 1);
        const bool inside = row >= 0 && row < lines && column >= 0 && column < lines;
        ASSERT_EQ(grid != nullptr, inside) << top << " " << row << " " << column;
        built += grid != nullptr ? 1 : 0;
      }
    }
  }
  EXPECT_GT(built, 10);
}

TEST_F(Grid, FirstTileAtTheGreatestRightEdgeOpensNoRow) {
  constexpr bx_long greatest = INT32_MAX;
  put_tile(db, "lead", 0, 90, greatest, 100);
  EXPECT_EQ(reason(), "the 1 tiles do not form rows");
  // One before the first row, then rows of two and one: four tiles, two rows, two columns by the count.
  put("b", 1, 5);
  put("a", 0, 5);
  put("c", 0, 3);
  EXPECT_EQ(reason(), "the 4 tiles do not form rows");
}

TEST_F(Grid, OfAGridFileNeedsNoWires) {
  put_block(db, "a", 0, 0, 10, 10);
  put_block(db, "b", 10, 0, 20, 10);
  EXPECT_EQ(reason(), "no instance is a tile");
  std::string why;
  const auto grid = qelmodb::make_grid(db, every_tile, qelmodb::tiles::with_or_without_wires, why);
  ASSERT_NE(grid, nullptr);
  EXPECT_EQ(cells_of(*grid), "a b");
}

// ---- counts beyond 16 bits

class LargeGrid : public Grid {
 protected:
  /// Rows of these lengths, from the top.
  void put_rows(const std::vector<bx_long>& lengths) {
    bx_long y = static_cast<bx_long>(lengths.size());
    for (const bx_long length : lengths) {
      --y;
      for (bx_long x = length; x > 0; --x) put_tile(db, "t", x - 1, y, x, y + 1);
    }
  }

  void put_staircase(bx_long count) {
    for (bx_long i = 0; i < count; ++i) put_tile(db, "t", i, i, i + 1, i + 1);
  }
};

TEST_F(LargeGrid, Of32767RowsIsBuilt) {
  put_staircase(32767);
  const BX_GRID grid(&db, every_tile);
  EXPECT_EQ(grid.getnumrows(), 32767);
  EXPECT_EQ(grid.getnumcols(), 1);
  EXPECT_EQ(grid.getinstance(32766, 0)->xmin, 0);
}

TEST_F(LargeGrid, RowsCountedIn16BitsComeToNothing) {
  put_staircase(65536);
  EXPECT_EQ(reason(), "the 65536 tiles do not form rows");
  put_tile(db, "t", 65536, 65536, 65537, 65537);
  put_tile(db, "t", 65537, 65537, 65538, 65538);
  EXPECT_EQ(reason(), "the 65538 tiles do not fill their rows, and there is no device that tells their places");
}

TEST_F(LargeGrid, NegativeRowCountIsLeftToTheDevice) {
  put_staircase(40000);
  EXPECT_EQ(reason(), "the 40000 tiles do not fill their rows, and there is no device that tells their places");
  even_device device(2000, 2000, 20);
  db.setdevice(&device);
  const BX_GRID grid(&db, every_tile);
  EXPECT_EQ(grid.getnumrows(), 2000);
  EXPECT_EQ(grid.getinstances(1999, 0)->getcount(), 20);
}

TEST_F(LargeGrid, RowsWhoseWrappedLengthsAddUpByAccidentAreNone) {
  // The longest run counts as 32767, and three times that are the tiles there are.
  put_rows({65537, 16382, 16382});
  EXPECT_EQ(reason(), "the 98301 tiles do not form rows");
}

}  // namespace
