// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The offsets of the wire templates of a set: for each line of the grid, columns or rows, and each wire template that
// runs over such lines, what its wires along the line have; equal lines once, and equal neighbours as runs.
#pragma once

#include <cstdint>
#include <vector>

#include "bx_basic_ass_template.h"

/// A switch matrix at its place in the grid.
struct bx_matrix_tile {
  std::uint16_t column;
  std::uint16_t row;
  BX_INSTANCE* inst;
  int list = 0;  ///< the number of its wire list
};

/// Fills index_map and offset_maps of all wire templates of the set, whose lists and directions are known. Tiles stand
/// by column, then row.
void bx_fill_offsets(BASIC_ASS_TEMPLATE& set, const std::vector<bx_matrix_tile>& tiles);
