// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_grid_builder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "bx_access.h"
#include "bx_tileiterator.h"
#include "np_device.h"
#include "ut_arith.h"
#include "ut_string.h"

namespace {

using cell = DARRAY_BX_INSTPTR*;

/// 16 bits, as rows and columns are counted.
short as_short(bx_long number) noexcept { return static_cast<short>(static_cast<std::uint16_t>(number)); }

short after(short number) noexcept { return as_short(number + 1); }

/// Tells, tile by tile, where a new row begins.
class row_rule {
 public:
  bool begins_row(const bx_tile& tile) noexcept {
    const bool begins = tile.right < previous_right_;
    previous_right_ = tile.right;
    return begins;
  }

 private:
  bx_long previous_right_ = std::numeric_limits<bx_long>::max();
};

/// Halfway between the two, rounded towards the first.
bx_long middle(bx_long from, bx_long to) noexcept { return ut_wrap_add(from, ut_wrap_sub(to, from) / 2); }

/// Fresh pages of the system are zero already: a large table with few tiles costs only what they touch.
template <class T>
T* zeros(short count) {
  void* memory = std::calloc(static_cast<std::size_t>(std::max<short>(count, 1)), sizeof(T));
  if (memory == nullptr) throw std::bad_alloc();
  return static_cast<T*>(memory);
}

/// For each of the numbers that occur its rank among them; count is how many occur.
std::vector<short> ranks(const std::vector<bool>& used, short& count) {
  std::vector<short> rank(used.size());
  count = 0;
  for (std::size_t i = 0; i < used.size(); ++i) {
    rank[i] = count;
    if (used[i]) ++count;
  }
  return rank;
}

}  // namespace

/// Rows of cells, all empty at first, and the lists for those that are filled.
class bx_grid_builder::cell_table {
 public:
  /// At most most_lists cells will be filled, each with a list that grows by growth_step.
  cell_table(short rows, short columns, std::size_t most_lists, bx_long growth_step)
      : rows_(rows),
        columns_(columns),
        cells_(zeros<cell*>(rows), release{rows}),
        lists_(new DARRAY_BX_INSTPTR[most_lists]),
        growth_step_(growth_step) {
    for (short row = 0; row < rows; ++row) cells_.get()[row] = zeros<cell>(columns);
  }

  cell_table(const cell_table&) = delete;
  cell_table& operator=(const cell_table&) = delete;

  void add(short row, short column, BX_INSTANCE* tile) {
    cell& place = cells_.get()[row][column];
    if (place == nullptr) {
      place = &lists_[used_lists_++];
      *place = DARRAY_BX_INSTPTR(growth_step_);
    }
    place->a_add(&tile);
    const short width = as_short(static_cast<bx_long>(std::strlen(ut_text(tile->name))));
    if (width > name_width_) name_width_ = width;
  }

  std::unique_ptr<DARRAY_BX_INSTPTR[]> take_lists() noexcept { return std::move(lists_); }
  cell** take_cells() noexcept { return cells_.release(); }
  short rows() const noexcept { return rows_; }
  short columns() const noexcept { return columns_; }
  short name_width() const noexcept { return name_width_; }

 private:
  struct release {
    short rows;
    void operator()(cell** cells) const noexcept {
      for (short row = 0; row < rows; ++row) std::free(cells[row]);
      std::free(cells);
    }
  };

  short rows_;
  short columns_;
  short name_width_ = 0;
  std::unique_ptr<cell*, release> cells_;
  std::unique_ptr<DARRAY_BX_INSTPTR[]> lists_;
  std::size_t used_lists_ = 0;
  bx_long growth_step_;
};

bool bx_is_tile(const BX_INSTANCE& inst, const char* const* prefixes) noexcept {
  if (inst.instances.getcount() != 0 || prefixes == nullptr) return false;
  const char* name = ut_text(inst.name);
  for (; *prefixes != nullptr; ++prefixes) {
    if (std::strncmp(name, *prefixes, std::strlen(*prefixes)) == 0) return true;
  }
  return false;
}

std::unique_ptr<BX_GRID> bx_grid_builder::empty_grid() { return std::unique_ptr<BX_GRID>(new BX_GRID()); }

bx_grid_problem bx_grid_builder::build(BX_GRID& grid) {
  collect();
  bx_order_tiles(tiles_);
  count_lines();
  if (rows_ == 0 || columns_ == 0) return {bx_grid_problem::no_rows, {}};
  if (tiles_.size() == static_cast<std::size_t>(rows_) * static_cast<std::size_t>(columns_)) {
    // Counts of 16 bits, and tiles before the first row, can add up by accident.
    if (!rows_have_one_length()) return {bx_grid_problem::no_rows, {}};
    place_by_order(grid);
    return {};
  }
  NP_DEVICE* device = db_.getdevice();
  if (device == nullptr) return {bx_grid_problem::no_device, {}};
  std::vector<device_place> places;
  short device_rows = 0;
  short device_columns = 0;
  bx_grid_problem problem = ask_device(*device, places, device_rows, device_columns);
  if (problem.kind == bx_grid_problem::none) place_by_device(grid, places, device_rows, device_columns);
  return problem;
}

const std::vector<bx_tile>& bx_grid_builder::collect() {
  for (BX_INSTANCE* child : db_.instances) {
    if (child == nullptr) break;
    BX_TILEITERATOR below(child);
    while (BX_INSTANCE* inst = below.getnext()) offer(inst);
    offer(child);
  }
  return tiles_;
}

void bx_grid_builder::offer(BX_INSTANCE* inst) {
  if (need_wires_ ? BX_GRID::qualifies(inst, prefixes_) : bx_is_tile(*inst, prefixes_)) tiles_.emplace_back(inst);
}

void bx_grid_builder::count_lines() {
  row_rule rule;
  short length = 0;
  for (const bx_tile& tile : tiles_) {
    if (rule.begins_row(tile)) {
      rows_ = after(rows_);
      length = 1;
    } else {
      length = after(length);
    }
    if (length > columns_) columns_ = length;
  }
}

bool bx_grid_builder::rows_have_one_length() const noexcept {
  row_rule rule;
  std::size_t place = 0;
  for (const bx_tile& tile : tiles_) {
    const bool at_row_start = place % static_cast<std::size_t>(columns_) == 0;
    if (rule.begins_row(tile) != at_row_start) return false;
    ++place;
  }
  return true;
}

void bx_grid_builder::place_by_order(BX_GRID& grid) {
  cell_table table(rows_, columns_, tiles_.size(), 1);
  row_rule rule;
  short row = -1;
  short column = -1;
  for (const bx_tile& tile : tiles_) {
    if (rule.begins_row(tile)) {
      ++row;
      column = -1;
    }
    table.add(row, ++column, tile.inst);
  }
  finish(grid, table);
}

bx_grid_problem bx_grid_builder::ask_device(NP_DEVICE& device, std::vector<device_place>& places, short& rows,
                                            short& columns) const {
  rows = as_short(ut_wrap_add(device.maxrow(), 1));
  columns = as_short(ut_wrap_add(device.maxcol(), 1));
  places.reserve(tiles_.size());
  for (const bx_tile& tile : tiles_) {
    const UT_POINT centre{middle(tile.inst->xmin, tile.inst->xmax), middle(tile.inst->ymin, tile.inst->ymax)};
    const bx_long row = ut_wrap_sub(rows - 1, device.rowof(centre));
    const bx_long column = device.colof(centre);
    if (row < 0 || row >= rows || column < 0 || column >= columns) {
      return {bx_grid_problem::out_of_paper, neoform("Device Error: %s at (%d,%d) is out of graph paper (%d,%d)",
                                                     ut_text(tile.inst->name), row, column, rows, columns)};
    }
    places.push_back({as_short(row), as_short(column)});
  }
  return {};
}

void bx_grid_builder::place_by_device(BX_GRID& grid, const std::vector<device_place>& places, short device_rows,
                                      short device_columns) {
  std::vector<bool> used_rows(static_cast<std::size_t>(device_rows));
  std::vector<bool> used_columns(static_cast<std::size_t>(device_columns));
  for (const device_place& place : places) {
    used_rows[static_cast<std::size_t>(place.row)] = true;
    used_columns[static_cast<std::size_t>(place.column)] = true;
  }
  const std::vector<short> row_ranks = ranks(used_rows, rows_);
  const std::vector<short> column_ranks = ranks(used_columns, columns_);
  cell_table table(rows_, columns_, tiles_.size(), 4);
  for (std::size_t i = 0; i < tiles_.size(); ++i) {
    table.add(row_ranks[static_cast<std::size_t>(places[i].row)],
              column_ranks[static_cast<std::size_t>(places[i].column)], tiles_[i].inst);
  }
  finish(grid, table);
}

void bx_grid_builder::finish(BX_GRID& grid, cell_table& table) {
  bx_access::names(db_).keep(table.take_lists());
  grid.rows_ = table.rows();
  grid.columns_ = table.columns();
  grid.name_width_ = table.name_width();
  grid.cells_ = table.take_cells();
}
