// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Grids of random tile sets against a plain model: insertion into a vector, and each rule written out.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <optional>
#include <random>

#include "grid_tiles.h"

namespace {

using test::even_device;
using test::every_tile;
using test::put_tile;

using tile_list = std::vector<BX_INSTANCE*>;

bx_long wrapped(std::int64_t number) { return static_cast<bx_long>(static_cast<std::uint32_t>(number)); }

std::int64_t compared(const BX_INSTANCE& a, const BX_INSTANCE& b) {
  const bool first = a.ymax > b.ymin;
  const bool second = b.ymax > a.ymin;
  bool same_row = first || second;
  if (b.ymax > a.ymax) same_row = first;
  if (b.ymax < a.ymax) same_row = second;
  if (same_row) return wrapped(std::int64_t{a.xmax} - b.xmax);
  return wrapped(std::int64_t{b.ymax} - a.ymax);
}

tile_list inserted(const tile_list& tiles) {
  tile_list sorted;
  for (BX_INSTANCE* tile : tiles) {
    std::size_t lo = 0;
    std::size_t hi = sorted.size();
    while (lo < hi) {
      const std::size_t mid = (lo + hi) / 2;
      if (compared(*tile, *sorted[mid]) < 0) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
    sorted.insert(sorted.begin() + static_cast<std::ptrdiff_t>(lo), tile);
  }
  return sorted;
}

/// Rows of the sorted list; what stands before the first row comes first, as a row of its own that may be empty.
std::vector<tile_list> cut_into_rows(const tile_list& sorted) {
  std::vector<tile_list> rows(1);
  bx_long right = INT32_MAX;
  for (BX_INSTANCE* tile : sorted) {
    if (tile->xmax < right) rows.emplace_back();
    rows.back().push_back(tile);
    right = tile->xmax;
  }
  return rows;
}

struct plain_grid {
  enum outcome { by_order, by_device, none } how = none;
  int rows = 0;
  int columns = 0;
  std::map<std::pair<int, int>, tile_list> cells;
};

bx_long half_way(bx_long from, bx_long to) {
  return wrapped(from + std::int64_t{wrapped(std::int64_t{to} - from) / 2});
}

plain_grid placed_by_device(const tile_list& sorted, even_device& device) {
  plain_grid grid;
  std::map<bx_long, int> row_numbers;
  std::map<bx_long, int> column_numbers;
  std::vector<std::pair<bx_long, bx_long>> places;
  for (BX_INSTANCE* tile : sorted) {
    const UT_POINT centre{half_way(tile->xmin, tile->xmax), half_way(tile->ymin, tile->ymax)};
    const bx_long row = device.rowof(centre);
    const bx_long column = device.colof(centre);
    if (row < 0 || row > device.maxrow() || column < 0 || column > device.maxcol()) return grid;
    places.emplace_back(-row, column);
    row_numbers[-row] = 0;
    column_numbers[column] = 0;
  }
  for (auto& [row, number] : row_numbers) number = grid.rows++;
  for (auto& [column, number] : column_numbers) number = grid.columns++;
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    grid.cells[{row_numbers[places[i].first], column_numbers[places[i].second]}].push_back(sorted[i]);
  }
  grid.how = plain_grid::by_device;
  return grid;
}

plain_grid built_plainly(const tile_list& tiles, even_device* device) {
  const tile_list sorted = inserted(tiles);
  const std::vector<tile_list> rows = cut_into_rows(sorted);
  plain_grid grid;
  grid.rows = static_cast<int>(rows.size()) - 1;
  for (const tile_list& row : rows) grid.columns = std::max(grid.columns, static_cast<int>(row.size()));
  if (grid.rows == 0) return grid;
  if (sorted.size() != static_cast<std::size_t>(grid.rows * grid.columns)) {
    return device != nullptr ? placed_by_device(sorted, *device) : grid;
  }
  if (!rows[0].empty()) return grid;
  grid.how = plain_grid::by_order;
  for (int row = 0; row < grid.rows; ++row) {
    for (int column = 0; column < grid.columns; ++column) {
      grid.cells[{row, column}] = {rows[static_cast<std::size_t>(row) + 1][static_cast<std::size_t>(column)]};
    }
  }
  return grid;
}

std::string difference(const BX_GRID& grid, const plain_grid& expected) {
  if (grid.getnumrows() != expected.rows || grid.getnumcols() != expected.columns) return "size";
  for (short row = 0; row < grid.getnumrows(); ++row) {
    for (short column = 0; column < grid.getnumcols(); ++column) {
      const DARRAY_BX_INSTPTR* list = grid.getinstances(row, column);
      const auto cell = expected.cells.find({row, column});
      const bool filled = cell != expected.cells.end();
      if ((list != nullptr) != filled) return "filling";
      if (filled && tile_list(list->begin(), list->end()) != cell->second) return "cell";
    }
  }
  return "";
}

/// Sets of tiles of many kinds.
class tile_maker {
 public:
  explicit tile_maker(unsigned seed) : random_(seed) {}

  std::unique_ptr<BX_DB> next() {
    auto db = std::make_unique<BX_DB>("D", 0, 0, 1, 1);
    switch (number(0, 5)) {
      case 0:
        rows_and_columns(*db, 0, 0);
        break;
      case 1:
        rows_and_columns(*db, 0, 3);
        break;
      case 2:
        rows_and_columns(*db, 6, 12);
        break;
      case 3:
        anywhere(*db, 6, 3);
        break;
      case 4:
        anywhere(*db, 40, 20);
        break;
      default:
        extreme(*db);
        break;
    }
    std::shuffle(db->instances.begin(), db->instances.end(), random_);
    return db;
  }

  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }

 private:
  void rows_and_columns(BX_DB& db, bx_long jitter, bx_long missing_of_100) {
    const bx_long rows = number(1, 5);
    const bx_long columns = number(1, 5);
    for (bx_long row = 0; row < rows; ++row) {
      for (bx_long column = 0; column < columns; ++column) {
        if (number(0, 99) < missing_of_100) continue;
        const bx_long x = column * 10 + number(0, jitter);
        const bx_long y = row * 10 + number(0, jitter);
        put_tile(db, "t", x, y, x + 10, y + 10 - number(0, jitter));
      }
    }
  }

  void anywhere(BX_DB& db, bx_long spread, bx_long size) {
    const bx_long count = number(1, 12);
    for (bx_long i = 0; i < count; ++i) {
      const bx_long x = number(-spread, spread);
      const bx_long y = number(-spread, spread);
      put_tile(db, "t", x, y, x + number(0, size), y + number(0, size));
    }
  }

  void extreme(BX_DB& db) {
    const bx_long ends[] = {INT32_MIN, INT32_MIN + 1, -2, -1, 0, 1, INT32_MAX - 1, INT32_MAX};
    auto end = [&] { return ends[number(0, 7)]; };
    const bx_long count = number(1, 7);
    for (bx_long i = 0; i < count; ++i) put_tile(db, "t", end(), end(), end(), end());
  }

  std::mt19937 random_;
};

class GridModel : public testing::TestWithParam<unsigned> {};

TEST_P(GridModel, RandomTileSetsGiveTheSameCells) {
  tile_maker maker(GetParam());
  int outcomes[3] = {0, 0, 0};
  for (int round = 0; round < 15000; ++round) {
    const std::unique_ptr<BX_DB> db = maker.next();
    even_device device(maker.number(1, 12), maker.number(1, 12), maker.number(1, 12));
    if (maker.number(0, 9) != 0) db->setdevice(&device);
    const tile_list tiles(db->instances.begin(), db->instances.end());
    const plain_grid expected = built_plainly(tiles, db->getdevice() != nullptr ? &device : nullptr);
    std::string why;
    const auto grid = qelmodb::make_grid(*db, every_tile, qelmodb::tiles::with_wires, why);
    ASSERT_EQ(grid != nullptr, expected.how != plain_grid::none) << "round " << round << ": " << why;
    if (grid != nullptr) {
      ASSERT_EQ(difference(*grid, expected), "") << "round " << round;
    }
    ++outcomes[expected.how];
  }
  for (const int count : outcomes) EXPECT_GT(count, 500) << "all outcomes are to be seen";
}

INSTANTIATE_TEST_SUITE_P(Seeds, GridModel, testing::Range(1U, 9U));

TEST(GridModelOfLargeSets, RaggedSetsOfThousandsGiveTheSameCells) {
  std::mt19937 random(3);
  auto number = [&random](bx_long from, bx_long to) {
    return std::uniform_int_distribution<bx_long>(from, to)(random);
  };
  for (const bx_long height : {9, 30, 2000}) {
    BX_DB db("D", 0, 0, 1, 1);
    for (int i = 0; i < 5000; ++i) {
      const bx_long x = number(0, 2000);
      const bx_long y = number(0, 2000);
      put_tile(db, "t", x, y, x + number(0, 9), y + number(0, height));
    }
    even_device device(500, 500, 10);
    db.setdevice(&device);
    const tile_list tiles(db.instances.begin(), db.instances.end());
    EXPECT_EQ(difference(BX_GRID(&db, every_tile), built_plainly(tiles, &device)), "") << height;
  }
}

}  // namespace
