// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How a grid comes about: which instances are tiles, and which cell each goes to.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "bx_db.h"
#include "bx_grid.h"
#include "bx_tile_order.h"

/// Why a grid could not be built.
struct bx_grid_problem {
  enum kind_type {
    none,
    no_rows,      ///< no tile, or no row that all tiles have a place in
    no_device,    ///< rows of different lengths and nobody to ask
    out_of_paper  ///< a tile lies outside of the device
  };

  kind_type kind = none;
  std::string detail;  ///< of out_of_paper
};

/// Builds grids of one database. Holds what is needed meanwhile.
class bx_grid_builder {
 public:
  /// A tile needs no wires when need_wires is false: in a database that was loaded from a grid file none has any.
  bx_grid_builder(BX_DB& db, const char* const* prefixes, bool need_wires) noexcept
      : db_(db), prefixes_(prefixes), need_wires_(need_wires) {}

  /// Fills an empty grid; leaves it empty when there is a problem. Throws std::bad_alloc.
  bx_grid_problem build(BX_GRID& grid);

  /// A grid without rows.
  static std::unique_ptr<BX_GRID> empty_grid();

  /// The tiles of the database, in the order of the tree.
  const std::vector<bx_tile>& collect();

  /// After build: the tiles in their order, and the rows and columns that they were counted to form.
  const std::vector<bx_tile>& tiles() const noexcept { return tiles_; }
  short rows() const noexcept { return rows_; }
  short columns() const noexcept { return columns_; }

 private:
  class cell_table;

  struct device_place {
    short row;
    short column;
  };

  void offer(BX_INSTANCE* inst);
  void count_lines();
  bool rows_have_one_length() const noexcept;
  void place_by_order(BX_GRID& grid);
  void place_by_device(BX_GRID& grid, const std::vector<device_place>& places, short device_rows, short device_columns);
  bx_grid_problem ask_device(NP_DEVICE& device, std::vector<device_place>& places, short& rows, short& columns) const;
  void finish(BX_GRID& grid, cell_table& table);

  BX_DB& db_;
  const char* const* prefixes_;
  bool need_wires_;
  std::vector<bx_tile> tiles_;
  short rows_ = 0;
  short columns_ = 0;
};

/// The test of tiles, wires aside: whether the instance has no children and its name begins with one of the prefixes.
bool bx_is_tile(const BX_INSTANCE& inst, const char* const* prefixes) noexcept;
