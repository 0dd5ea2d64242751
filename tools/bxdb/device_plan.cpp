// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "device_plan.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace bxdb {
namespace {

// Which neighbours of a matrix stand; the lower bits of the number of a wire list.
constexpr std::size_t east_stands = 1;
constexpr std::size_t west_stands = 2;
constexpr std::size_t north_stands = 4;
constexpr std::size_t south_stands = 8;
constexpr std::size_t neighbour_sets = 16;

// Kinds of matrices in descending order of their wires; the upper bits of the number of a wire list.
std::size_t matrix_class(tile_kind kind) noexcept {
  switch (kind) {
    case tile_kind::logic:
      return 0;
    case tile_kind::ram:
      return 1;
    case tile_kind::dsp:
      return 2;
    default:
      return 3;
  }
}

bx_long height_of(tile_kind kind) noexcept {
  switch (kind) {
    case tile_kind::ram:
      return 2;
    case tile_kind::dsp:
      return 3;
    default:
      return 1;
  }
}

void check_range(const char* what, std::int64_t value, std::int64_t least, std::int64_t most) {
  if (value >= least && value <= most) return;
  throw std::invalid_argument(std::to_string(value) + " " + what + ": the device profile needs " +
                              std::to_string(least) + " to " + std::to_string(most));
}

}  // namespace

const char* to_string(tile_kind kind) noexcept {
  switch (kind) {
    case tile_kind::logic:
      return "LOGIC";
    case tile_kind::ram:
      return "RAM";
    case tile_kind::dsp:
      return "DSP";
    case tile_kind::io_west:
      return "IO_W";
    case tile_kind::io_east:
      return "IO_E";
    case tile_kind::io_south:
      return "IO_S";
    case tile_kind::io_north:
      return "IO_N";
    case tile_kind::none:
      break;
  }
  return "";
}

std::uint64_t device_random(std::uint64_t seed, std::uint64_t a, std::uint64_t b) noexcept {
  std::uint64_t state = seed * 0xd1342543de82ef95U + a * 0x2545f4914f6cdd1dU + b + 1;
  for (int round = 0; round < 3; ++round) {
    state ^= state >> 31;
    state *= 0x9e3779b97f4a7c15U;
    state ^= state >> 29;
  }
  return state;
}

bx_long device_plan::pitch_of(const device_options& options) {
  constexpr std::int64_t most = std::numeric_limits<bx_long>::max();
  check_range("columns", options.columns, least_device_size, most);
  check_range("rows", options.rows, least_device_size, most);
  check_range("wires", options.wires, least_device_wires, most_device_wires);
  // Room for the nodes of all wires of a matrix side by side.
  const std::int64_t pitch = 2 * std::max<std::int64_t>(32, options.wires + 2);
  if (std::max(options.columns, options.rows) > most / pitch) {
    throw std::invalid_argument("coordinates of a device of this size do not fit into 32 bits");
  }
  return static_cast<bx_long>(pitch);
}

device_plan::device_plan(const device_options& options) : pitch_(pitch_of(options)), seed_(options.seed) {
  columns_ = static_cast<bx_long>(options.columns);
  rows_ = static_cast<bx_long>(options.rows);
  pairs_ = lines_ = static_cast<bx_long>(options.wires / 8);
  locals_ = static_cast<bx_long>(options.wires) - 4 * pairs_ - 2 * lines_;
  local_shift_ = static_cast<bx_long>(device_random(seed_, 0, 2) % static_cast<std::uint64_t>(locals_));
  gap_column_ = last_logic_column();
  gap_row_ = rows_ < 5 ? -1 : 3 + static_cast<bx_long>(device_random(seed_, 0, 1) % static_cast<unsigned>(rows_ - 4));
  places_.resize(static_cast<std::size_t>(columns_) * static_cast<std::size_t>(rows_), tile_kind::none);
  for (bx_long column = 0; column < columns_; ++column) plan_column(column);
}

// Six inner columns repeat: the first holds logic, and one RAM and one DSP column stand among the others.
tile_kind device_plan::kind_of_column(bx_long column) const noexcept {
  constexpr bx_long group = 6;
  const bx_long inner = column - 1;
  const bx_long ram = 1 + static_cast<bx_long>(device_random(seed_, 1, static_cast<unsigned>(inner / group)) % 2);
  const bx_long dsp = 3 + static_cast<bx_long>(device_random(seed_, 2, static_cast<unsigned>(inner / group)) % 2);
  if (inner % group == ram) return tile_kind::ram;
  return inner % group == dsp ? tile_kind::dsp : tile_kind::logic;
}

bx_long device_plan::last_logic_column() const noexcept {
  bx_long column = columns_ - 2;
  while (column > 1 && kind_of_column(column) != tile_kind::logic) --column;
  return column;
}

// A matrix with all its neighbours must stand somewhere, as it alone has all wires: nothing is missing around
// the lowest left one.
bool device_plan::is_missing(bx_long column, bx_long row) const noexcept {
  if (column <= 2 && row <= 2) return false;
  if (column == gap_column_ && row == gap_row_) return true;
  return device_random(seed_, 3 + static_cast<unsigned>(column), static_cast<unsigned>(row)) % 32 == 0;
}

void device_plan::plan_column(bx_long column) {
  if (column == 0 || column == columns_ - 1) {
    const tile_kind kind = column == 0 ? tile_kind::io_west : tile_kind::io_east;
    for (bx_long row = 1; row < rows_ - 1; ++row) plan_tile(kind, column, row, 1);
    return;
  }
  const tile_kind kind = kind_of_column(column);
  const bx_long height = height_of(kind);
  plan_tile(tile_kind::io_south, column, 0, 1);
  for (bx_long row = 1; row < rows_ - 1;) {
    const bool fits = row + height <= rows_ - 1;
    const bx_long rows = fits ? height : 1;
    const tile_kind here = fits ? kind : tile_kind::logic;
    if (here != tile_kind::logic || !is_missing(column, row)) plan_tile(here, column, row, rows);
    row += rows;
  }
  plan_tile(tile_kind::io_north, column, rows_ - 1, 1);
}

void device_plan::plan_tile(tile_kind kind, bx_long column, bx_long row, bx_long height) {
  tiles_.push_back({kind, column, row, height});
  const auto first = static_cast<std::size_t>(column) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(row);
  std::fill_n(places_.begin() + static_cast<std::ptrdiff_t>(first), height, kind);
}

tile_kind device_plan::kind_at(bx_long column, bx_long row) const noexcept {
  if (column < 0 || column >= columns_ || row < 0 || row >= rows_) return tile_kind::none;
  return places_[static_cast<std::size_t>(column) * static_cast<std::size_t>(rows_) + static_cast<std::size_t>(row)];
}

std::size_t device_plan::wire_list_at(bx_long column, bx_long row) const noexcept {
  std::size_t list = matrix_class(kind_at(column, row)) * neighbour_sets;
  if (kind_at(column + 1, row) != tile_kind::none) list += east_stands;
  if (kind_at(column - 1, row) != tile_kind::none) list += west_stands;
  if (kind_at(column, row + 1) != tile_kind::none) list += north_stands;
  if (kind_at(column, row - 1) != tile_kind::none) list += south_stands;
  return list;
}

std::vector<planned_wire> device_plan::wire_list(std::size_t list) const {
  std::vector<planned_wire> wires;
  const auto add = [&wires](const char* stem, wire_run run, bx_long count) {
    for (bx_long i = 0; i < count; ++i) wires.push_back({stem + std::to_string(i), run, i});
  };
  const auto stands = [list](std::size_t neighbour) { return (list & neighbour) != 0; };
  const auto poorness = static_cast<bx_long>(list / neighbour_sets) + 1;
  add("E1BEG", wire_run::east_begin, stands(east_stands) ? pairs_ : 0);
  add("E1END", wire_run::east_end, stands(west_stands) ? pairs_ : 0);
  add("N1BEG", wire_run::north_begin, stands(north_stands) ? pairs_ : 0);
  add("N1END", wire_run::north_end, stands(south_stands) ? pairs_ : 0);
  add("HLINE", wire_run::row_line, lines_);
  add("VLINE", wire_run::column_line, lines_);
  add("J", wire_run::local, std::max<bx_long>(locals_ / poorness, 1));
  std::sort(wires.begin(), wires.end(), [](const planned_wire& a, const planned_wire& b) { return a.name < b.name; });
  return wires;
}

void device_plan::node(const planned_wire& wire, bx_long column, bx_long row, bx_long& x, bx_long& y) const noexcept {
  x = column * pitch_;
  y = row * pitch_;
  const bx_long step = 1 + wire.number;
  switch (wire.run) {
    case wire_run::east_begin:
      x += pitch_;
      y += step;
      break;
    case wire_run::east_end:
      y += step;
      break;
    case wire_run::north_begin:
      x += step;
      y += pitch_;
      break;
    case wire_run::north_end:
      x += step;
      break;
    case wire_run::row_line:
      x = 0;
      y += pairs_ + step;
      break;
    case wire_run::column_line:
      x += pairs_ + step;
      y = 0;
      break;
    case wire_run::local:
      x += step;
      y += 1 + (wire.number + local_shift_) % locals_;
      break;
  }
}

}  // namespace bxdb
