// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The plan of a synthetic device: which tile stands where, and which wires its switch matrices have.
//
// The plan is a table of columns and rows. An I/O ring surrounds it, whose corners are empty. Inside, each
// column holds tiles of one kind: logic tiles of one row, RAM tiles of two, DSP tiles of three; rows that are
// left over at the top hold logic. Some logic tiles are missing. Everything follows from the options alone,
// on every platform.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ut_types.h"

namespace bxdb {

enum class device_profile {
  device,  ///< tiles in columns, with switch matrices that are connected
  plain    ///< one level: a stack of equal tiles with wires
};

enum class tile_names {
  kind,   ///< all tiles of a kind have one name
  unique  ///< each tile has its own
};

struct device_options {
  std::int64_t columns = 24;
  std::int64_t rows = 16;
  std::int64_t wires = 60;  ///< of the largest switch matrix; of each tile in the plain profile
  std::uint64_t seed = 1;
  device_profile profile = device_profile::device;
  tile_names names = tile_names::kind;
};

/// The least numbers of columns, rows and wires of the device profile.
inline constexpr std::int64_t least_device_size = 3;
inline constexpr std::int64_t least_device_wires = 4;

/// The largest number of wires; a template of a compressed file counts its wires in 16 bits.
inline constexpr std::int64_t most_device_wires = 65535;

/// A number that looks random and depends on nothing but its arguments.
std::uint64_t device_random(std::uint64_t seed, std::uint64_t a, std::uint64_t b) noexcept;

enum class tile_kind : unsigned char { none, logic, ram, dsp, io_west, io_east, io_south, io_north };

const char* to_string(tile_kind kind) noexcept;

struct planned_tile {
  tile_kind kind;
  bx_long column;
  bx_long row;     ///< the lowest
  bx_long height;  ///< in rows
};

/// What a wire of a switch matrix is, which decides where its node lies.
enum class wire_run : unsigned char {
  east_begin,  ///< at the border to the next column, where that matrix has the east_end of the same number
  east_end,
  north_begin,  ///< the same towards the next row
  north_end,
  row_line,     ///< one node for all matrices of a row, under one name
  column_line,  ///< one node for all matrices of a column, under one name
  local         ///< within the matrix
};

struct planned_wire {
  std::string name;
  wire_run run;
  bx_long number;  ///< among the wires of its run
};

class device_plan {
 public:
  /// Number of different wire lists that a plan can have.
  static constexpr std::size_t most_wire_lists = 64;

  /// The width and height of a place in a plan of these options, which is not made. Throws as that does.
  static bx_long pitch_of(const device_options& options);

  /// Throws std::invalid_argument, with the reason, for options that give no device.
  explicit device_plan(const device_options& options);

  /// All tiles, column by column from the left, in a column from the bottom.
  const std::vector<planned_tile>& tiles() const noexcept { return tiles_; }

  /// Which kind of tile covers a place; none outside, in the corners and where a tile is missing.
  tile_kind kind_at(bx_long column, bx_long row) const noexcept;

  /// Which list the wires of the switch matrix at a place follow: matrices of poorer kinds lack local wires,
  /// and where a neighbour is missing the wires to it are missing.
  std::size_t wire_list_at(bx_long column, bx_long row) const noexcept;

  /// The wires of a list, ascending by name.
  std::vector<planned_wire> wire_list(std::size_t list) const;

  /// Where the node of a wire of the matrix at a place lies, relative to the lower left corner of the
  /// device.
  void node(const planned_wire& wire, bx_long column, bx_long row, bx_long& x, bx_long& y) const noexcept;

  /// Width and height of a place in units of the coordinate grid. The lower half of a place is its switch
  /// matrix.
  bx_long pitch() const noexcept { return pitch_; }

  bx_long columns() const noexcept { return columns_; }
  bx_long rows() const noexcept { return rows_; }

 private:
  void plan_column(bx_long column);
  void plan_tile(tile_kind kind, bx_long column, bx_long row, bx_long height);
  tile_kind kind_of_column(bx_long column) const noexcept;
  bool is_missing(bx_long column, bx_long row) const noexcept;
  bx_long last_logic_column() const noexcept;

  bx_long columns_ = 0;
  bx_long rows_ = 0;
  bx_long pitch_ = 0;
  std::uint64_t seed_ = 0;
  bx_long pairs_ = 0;   // wires of each of the four runs that begin or end at a border
  bx_long lines_ = 0;   // row lines, and as many column lines
  bx_long locals_ = 0;  // local wires of the richest matrix
  bx_long local_shift_ = 0;
  bx_long gap_column_ = -1;  // a place that is missing in any case
  bx_long gap_row_ = -1;
  std::vector<tile_kind> places_;  // column by column
  std::vector<planned_tile> tiles_;
};

}  // namespace bxdb
