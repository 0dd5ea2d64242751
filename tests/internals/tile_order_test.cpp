// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The order of tiles: the sort where it is used equals the insertion, and the insertion equals that of the
// library's arrays.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "bx_tile_order.h"
#include "ut_darray.h"

namespace {

using tile_list = std::vector<bx_tile>;

class TileOrder : public testing::Test {
 protected:
  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }

  void put(bx_long left, bx_long bottom, bx_long right, bx_long top) {
    blocks_.push_back(std::make_unique<BX_INSTANCE>(nullptr, left, bottom, right, top));
    tiles_.emplace_back(blocks_.back().get());
  }

  void clear() {
    tiles_.clear();
    blocks_.clear();
  }

  /// Rows that keep apart, whose tiles overlap each other; tops and bottoms vary as far as that leaves room.
  void put_rows(bx_long rows, bx_long most_columns) {
    for (bx_long row = 0; row < rows; ++row) {
      const bx_long columns = number(1, most_columns);
      for (bx_long i = 0; i < columns; ++i) {
        const bx_long right = number(0, 20);
        put(right - 3, row * 10 + number(0, 4), right, row * 10 + number(5, 10));
      }
    }
    std::shuffle(tiles_.begin(), tiles_.end(), random_);
  }

  void put_anywhere(int count, bx_long spread) {
    for (int i = 0; i < count; ++i) {
      const bx_long x = number(-spread, spread);
      const bx_long y = number(-spread, spread);
      put(x, y, x + number(0, 5), y + number(0, 5));
    }
  }

  std::vector<BX_INSTANCE*> inserted_into_array() const {
    UT_DARRAY<bx_tile> array(2000);
    for (const bx_tile& tile : tiles_) array.a_sortadd(&tile, bx_compare_tiles);
    return instances(array);
  }

  template <class Tiles>
  static std::vector<BX_INSTANCE*> instances(const Tiles& tiles) {
    std::vector<BX_INSTANCE*> list;
    for (const bx_tile& tile : tiles) list.push_back(tile.inst);
    return list;
  }

  std::mt19937 random_{11};
  std::vector<std::unique_ptr<BX_INSTANCE>> blocks_;
  tile_list tiles_;
};

TEST_F(TileOrder, OfRowsThatKeepApartIsSortedAndEqualsTheInsertion) {
  for (int round = 0; round < 20000; ++round) {
    clear();
    put_rows(number(1, 6), number(1, 8));
    tile_list sorted = tiles_;
    ASSERT_TRUE(bx_order_tiles_in_rows(sorted));
    ASSERT_EQ(instances(sorted), inserted_into_array()) << "round " << round;
  }
}

TEST_F(TileOrder, WhereTheSortAgreesToTilesAnywhereItEqualsTheInsertion) {
  int sorted_sets = 0;
  for (int round = 0; round < 50000; ++round) {
    clear();
    put_anywhere(number(1, 7), number(1, 25));
    tile_list sorted = tiles_;
    if (!bx_order_tiles_in_rows(sorted)) {
      ASSERT_EQ(instances(sorted), instances(tiles_)) << "refused, so left as they were";
      continue;
    }
    ++sorted_sets;
    ASSERT_EQ(instances(sorted), inserted_into_array()) << "round " << round;
  }
  EXPECT_GT(sorted_sets, 5000);
  EXPECT_LT(sorted_sets, 45000);
}

TEST_F(TileOrder, AtTheEndsOfTheNumberRangeEqualsTheInsertion) {
  const bx_long ends[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX - 1, INT32_MAX};
  auto end = [&] { return ends[number(0, 6)]; };
  for (int round = 0; round < 20000; ++round) {
    clear();
    const bx_long count = number(1, 5);
    for (bx_long i = 0; i < count; ++i) put(end(), end(), end(), end());
    tile_list ordered = tiles_;
    bx_order_tiles(ordered);
    ASSERT_EQ(instances(ordered), inserted_into_array()) << "round " << round;
  }
}

TEST_F(TileOrder, OneByOneEqualsTheArraysInsertionBeyondOneBlock) {
  put_anywhere(30000, 300);
  tile_list ordered = tiles_;
  bx_order_tiles_one_by_one(ordered);
  EXPECT_EQ(instances(ordered), inserted_into_array());
}

TEST_F(TileOrder, SortRefusesWhatOverlapsInPartHasNoHeightOrWrapsAround) {
  auto refused = [this] { return !bx_order_tiles_in_rows(tiles_); };
  put(0, 0, 5, 10);
  put(5, 8, 10, 18);
  EXPECT_FALSE(refused()) << "both overlap";
  put(10, 16, 15, 26);
  EXPECT_TRUE(refused()) << "the third overlaps the second only";
  clear();
  put(0, 5, 5, 5);
  EXPECT_TRUE(refused()) << "no height";
  clear();
  put(0, 0, 0, 1);
  put(INT32_MIN, 0, -1, 1);
  EXPECT_FALSE(refused());
  put(INT32_MIN, 0, INT32_MAX, 1);
  EXPECT_TRUE(refused()) << "right edges too far apart";
  clear();
  put(0, INT32_MAX - 1, 1, INT32_MAX);
  put(0, -3, 1, -2);
  EXPECT_TRUE(refused()) << "tops too far apart";
}

}  // namespace
