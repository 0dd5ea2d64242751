// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The tiles of a database as a table of rows and columns.
#pragma once

#include "bx_instance.h"

class BX_DB;

/// A table of tiles. Row 0 is the topmost, column 0 the leftmost. A tile is an instance with wires and
/// without children whose name begins with one of the prefixes that the grid is built with; letters count
/// by case.
///
/// Tiles are ordered from the top down, those whose vertical spans overlap by more than a touch by their right
/// edges. In this order a tile whose right edge is less than that of the one before begins a new row. So a row
/// that begins at the very right edge where the one above ends counts as its continuation: a single column of
/// tiles is one row.
///
/// When all rows have the same length, each cell holds one tile and no device is asked (geometric mode).
/// Otherwise the database's device tells row and column of each tile's centre; rows and columns in which no
/// tile lies are left out, cells may be empty or hold several tiles (device mode). Device rows count
/// upwards, grid rows downwards.
///
/// A grid holds pointers into the database and must not be used after it, nor after the tiles changed; it is
/// never brought up to date. Reading a grid may run concurrently. At most 32767 rows and columns.
class BX_API BX_GRID {
 public:
  /// Builds the grid. names are prefixes, ended by a null pointer; null means none. Ends the process through
  /// the message manager when no tile qualifies, when the tiles open no row, when the rows differ in length
  /// and the database has no device, or when a tile's centre lies outside of the device; make_grid in
  /// qelmoext.h gives the reason instead. O(n log n) for tiles that lie in rows; tiles that overlap in other
  /// ways take up to O(n sqrt n). Throws std::bad_alloc.
  BX_GRID(BX_DB* db, const char* const* names);

  BX_GRID(const BX_GRID& other) = delete;

  /// Shallow: afterwards the two share one table, and only one of them may be destroyed. The former table of
  /// this grid is not released.
  BX_GRID& operator=(const BX_GRID& other) noexcept;

  /// Releases the table. The lists of the cells stay valid as long as the database.
  ~BX_GRID();

  // ---- look up

  short getnumrows() const noexcept { return rows_; }
  short getnumcols() const noexcept { return columns_; }

  /// Length of the longest name among the tiles of the grid, in characters.
  short getnamewidth() const noexcept { return name_width_; }

  /// 1 for a row from 0 to getnumrows() - 1 and a column from 0 to getnumcols() - 1, 0 otherwise.
  unsigned char isvalid(short row, short col) const noexcept;

  /// The tiles of a cell, owned by the database; null for an empty cell. Ends the process through the
  /// message manager when the cell is not valid.
  DARRAY_BX_INSTPTR* getinstances(short row, short col) const;

  /// The first tile of a cell, or null when it has none. Ends the process as getinstances does.
  BX_INSTANCE* getinstance(short row, short col) const;

  // ---- report through ut_msgman

  /// The names of the tiles as a table, "NULL_ASS" for an empty cell. A row takes as many lines as its
  /// fullest cell has tiles.
  void printme() const;

  /// The same with the rectangle of each tile behind its name.
  void printextrema() const;

 private:
  friend class bx_grid_builder;

  BX_GRID() noexcept = default;

  static bool qualifies(BX_INSTANCE* const inst, const char* const* names);

  short rows_ = 0;
  short columns_ = 0;
  short name_width_ = 0;
  DARRAY_BX_INSTPTR*** cells_ = nullptr;  // owned with its rows; the lists belong to the database
};
