// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Builds the template set of a database's switch matrices. Works over the switch matrices that there are, never
// over all places of the grid: a sparse one of 50 thousand columns and rows is no trouble.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "bx_basic_ass_template.h"
#include "bx_db.h"
#include "bx_matrix_offsets.h"
#include "bx_template_index.h"

class bx_matrix_builder {
 public:
  bx_matrix_builder(BASIC_ASS_TEMPLATE& set, BX_DB& db) noexcept : set_(set), db_(db) {}

  /// Fills the set, as far as the database lets it.
  void build();

 private:
  using tile = bx_matrix_tile;

  bool collect();
  bool number_lines();
  void place_tiles();
  void make_wire_templates();
  bool make_wire_lists();
  void append_lists(const std::vector<bx_wire_list>& fresh);
  const tile* tile_at(int column, int row) const;
  void find_spans();
  BASIC_ASS_TEMPLATE& set_;
  BX_DB& db_;
  BX_INSTANCE* model_ = nullptr;
  std::vector<BX_INSTANCE*> matrices_;
  std::map<bx_long, std::uint16_t> columns_;  // those of the set before
  std::map<bx_long, std::uint16_t> rows_;
  std::vector<tile> tiles_;  // by column, then row
};
