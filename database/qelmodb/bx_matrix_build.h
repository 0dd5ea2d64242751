// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Builds the template set of a database's switch matrices. Works over the switch matrices that there are, never
// over all places of the grid: a sparse one of 50 thousand columns and rows is no trouble.
#pragma once

#include <memory>
#include <vector>

#include "bx_basic_ass_template.h"
#include "bx_db.h"

class bx_matrix_builder {
 public:
  bx_matrix_builder(BASIC_ASS_TEMPLATE& set, BX_DB& db) noexcept : set_(set), db_(db) {}

  /// Fills the set, as far as the database lets it.
  void build();

 private:
  struct tile {
    std::uint16_t column;
    std::uint16_t row;
    BX_INSTANCE* inst;
    int list = 0;
  };

  /// Where a wire template stands in a wire list.
  struct place_in_list {
    int list;
    int position;
  };

  /// Tiles in the order of their lines (columns or rows), and where each line that has tiles begins.
  struct lines {
    std::vector<const tile*> tiles;
    std::vector<std::size_t> starts;  // one more than there are lines
  };

  struct run {
    std::uint16_t start;
    BX_POINT value;
    bool operator<(const run& other) const noexcept;
  };

  bool collect();
  bool number_lines();
  void place_tiles();
  void make_wire_templates();
  bool make_wire_lists();
  void append_lists(const std::vector<std::vector<std::uint16_t>>& fresh);
  void find_positions();
  const tile* tile_at(int column, int row) const;
  void find_spans();
  lines lines_of(bool columns) const;
  void fill_offsets(int wire, const lines& by_line, std::vector<int>& position_in_list);
  void runs_of_line(int wire, const lines& by_line, std::size_t line, const std::vector<int>& position_in_list,
                    std::vector<run>& runs) const;

  BASIC_ASS_TEMPLATE& set_;
  BX_DB& db_;
  BX_INSTANCE* model_ = nullptr;
  std::vector<BX_INSTANCE*> matrices_;
  std::vector<tile> tiles_;                         // by column, then row
  std::vector<std::vector<place_in_list>> places_;  // by wire template
};
