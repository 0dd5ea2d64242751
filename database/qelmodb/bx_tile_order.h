// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The order in which a grid takes its tiles: from the topmost row down, in a row from left to right.
#pragma once

#include <vector>

#include "bx_instance.h"

/// A tile with what its place depends on.
struct bx_tile {
  explicit bx_tile(BX_INSTANCE* tile) noexcept : inst(tile), right(tile->xmax), top(tile->ymax), bottom(tile->ymin) {}

  BX_INSTANCE* inst;
  bx_long right;
  bx_long top;
  bx_long bottom;
};

/// Tiles whose vertical spans overlap compare by their right edges, others by their tops, the higher one
/// first. Not transitive where spans overlap in part; differences wrap around.
bx_long bx_compare_tiles(const bx_tile& a, const bx_tile& b) noexcept;

/// Puts the tiles into the order that inserting them one by one gives, each behind those that compare equal.
/// Where the comparison is not transitive the order depends on the very probes of that insertion, and is
/// found by making them.
void bx_order_tiles(std::vector<bx_tile>& tiles);

/// The same by one stable sort where that is certain to give the same: when the tiles fall into rows, in each
/// of which all overlap each other and none overlaps a tile of another row. False, and the tiles as they
/// were, otherwise.
bool bx_order_tiles_in_rows(std::vector<bx_tile>& tiles);

/// The same by the insertion itself.
void bx_order_tiles_one_by_one(std::vector<bx_tile>& tiles);
