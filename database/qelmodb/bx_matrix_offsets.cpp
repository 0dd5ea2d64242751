// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_matrix_offsets.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "bx_matrix_nodes.h"
#include "qelmotmplt.h"

namespace {

struct run {
  std::uint16_t start;
  BX_POINT value;

  friend bool operator==(const run&, const run&) noexcept = default;
  friend bool operator<(const run& a, const run& b) noexcept {
    return std::tie(a.start, a.value.x, a.value.y) < std::tie(b.start, b.value.x, b.value.y);
  }
};

/// The offsets of one wire template, line after line.
class offset_lines {
 public:
  explicit offset_lines(WIRE_TEMPLATE_SM& wire) : origin_(wire), wire_(&wire) {}

  void begin_line() noexcept {
    runs_.clear();
    next_ = 0;
  }

  void add(std::size_t along, BX_POINT corner, BX_POINT node) {
    const BX_POINT offset = origin_.offset(corner, node);
    // Mostly the run in hand goes on.
    if (along != next_ || along == 0 || !(offset == last_)) add_run(along, offset);
    next_ = along + 1;
  }

  void end_line(std::size_t outer, std::size_t along_count) {
    if (next_ < along_count) append(next_, NO_POINT);
    // A line is mostly like the one before.
    if (previous_ < pool_.size() && *pool_[previous_] == runs_) return;
    const auto [entry, is_new] = numbers_.try_emplace(runs_, static_cast<std::uint16_t>(pool_.size()));
    if (is_new) pool_.push_back(&entry->first);
    previous_ = entry->second;
    indices_.emplace_back(static_cast<std::uint16_t>(outer), entry->second);
  }

  void store(std::size_t outer_count, std::size_t along_count) const {
    wire_->index_map.size = static_cast<std::uint16_t>(outer_count);
    auto& indices = wire_->index_map.ranges;
    for (const auto& [outer, number] : indices_) indices.emplace_hint(indices.end(), outer, number);
    wire_->offset_maps = new RANGE_MAP<BX_POINT>[pool_.size()];
    wire_->num_offset_map = static_cast<std::uint16_t>(pool_.size());
    for (std::size_t k = 0; k < pool_.size(); ++k) {
      RANGE_MAP<BX_POINT>& map = wire_->offset_maps[k];
      map.size = static_cast<std::uint16_t>(along_count);
      for (const run& r : *pool_[k]) map.ranges.emplace_hint(map.ranges.end(), r.start, r.value);
    }
  }

 private:
  static constexpr std::size_t none = SIZE_MAX;

  void add_run(std::size_t along, BX_POINT offset) {
    if (along > next_) append(next_, NO_POINT);
    append(along, offset);
  }

  void append(std::size_t start, BX_POINT value) {
    if (runs_.empty() || !(last_ == value)) runs_.push_back({static_cast<std::uint16_t>(start), value});
    last_ = value;
  }

  bx_node_origin origin_;
  std::size_t next_ = 0;   // along the line in hand
  BX_POINT last_;          // the value of the last run
  std::vector<run> runs_;  // of that line
  WIRE_TEMPLATE_SM* wire_;
  std::map<std::vector<run>, std::uint16_t> numbers_;
  std::vector<const std::vector<run>*> pool_;  // by number
  std::size_t previous_ = none;                // the number of the line before
  std::vector<std::pair<std::uint16_t, std::uint16_t>> indices_;
};

/// All wire templates that run over lines of one direction. Tile by tile, as tiles lie in memory, and not wire by wire:
/// that would visit each of thousands of tiles a hundred times.
class offset_builder {
 public:
  offset_builder(BASIC_ASS_TEMPLATE& set, bool by_column)
      : by_column_(by_column),
        outer_count_((by_column ? set.colmap : set.rowmap).size()),
        along_count_((by_column ? set.rowmap : set.colmap).size()) {
    std::vector<int> places(set.num_wire_template, -1);
    for (int i = 0; i < set.num_wire_template; ++i) {
      if ((set.wire_templates[i].span_dir == 1) != by_column) continue;
      places[static_cast<std::size_t>(i)] = static_cast<int>(wires_.size());
      wires_.emplace_back(set.wire_templates[i]);
    }
    for (int list = 0; list < set.num_wirelist; ++list) lists_.push_back(parts_of(set, list, places));
  }

  /// Tiles by line, and along the line.
  void build(const std::vector<const bx_matrix_tile*>& tiles) {
    for (std::size_t t = 0; t < tiles.size();) {
      const std::size_t outer = outer_of(*tiles[t]);
      add_empty_line(outer);
      for (offset_lines& wire : wires_) wire.begin_line();
      for (; t < tiles.size() && outer_of(*tiles[t]) == outer; ++t) add(*tiles[t]);
      for (offset_lines& wire : wires_) wire.end_line(outer, along_count_);
      next_ = outer + 1;
    }
    add_empty_line(outer_count_);
    for (const offset_lines& wire : wires_) wire.store(outer_count_, along_count_);
  }

 private:
  /// A wire of a list that runs in this direction.
  struct part {
    std::size_t wire;  // in wires_
    bx_long position;  // in the list
  };

  // Of several positions of a template in a list the last one counts.
  static std::vector<part> parts_of(const BASIC_ASS_TEMPLATE& set, int list, const std::vector<int>& places) {
    std::map<std::size_t, bx_long> positions;
    for (int j = 0; j < set.wirelist_numwires[list]; ++j) {
      const std::uint16_t number = set.wirelists[list][j];
      if (number >= places.size() || places[number] < 0) continue;
      positions[static_cast<std::size_t>(places[number])] = j;
    }
    std::vector<part> parts;
    parts.reserve(positions.size());
    for (const auto& [wire, position] : positions) parts.push_back({wire, position});
    std::sort(parts.begin(), parts.end(), [](const part& a, const part& b) { return a.position < b.position; });
    return parts;
  }

  std::size_t outer_of(const bx_matrix_tile& at) const noexcept { return by_column_ ? at.column : at.row; }

  void add(const bx_matrix_tile& at) {
    const std::size_t along = by_column_ ? at.row : at.column;
    const BX_POINT corner(at.inst->xmin, at.inst->ymin);
    for (const part& each : lists_[static_cast<std::size_t>(at.list)]) {
      const BX_WIRE& wire = at.inst->wires[each.position];
      wires_[each.wire].add(along, corner, {wire.nodex, wire.nodey});
    }
  }

  // Lines without any tile, up to but not including this one.
  void add_empty_line(std::size_t outer) {
    if (next_ == outer) return;
    for (offset_lines& wire : wires_) {
      wire.begin_line();
      wire.end_line(next_, along_count_);
    }
  }

  bool by_column_;
  std::size_t outer_count_;
  std::size_t along_count_;
  std::vector<offset_lines> wires_;
  std::vector<std::vector<part>> lists_;
  std::size_t next_ = 0;  // the line that comes next when none is left out
};

}  // namespace

void bx_fill_offsets(BASIC_ASS_TEMPLATE& set, const std::vector<bx_matrix_tile>& tiles) {
  std::vector<const bx_matrix_tile*> by_line;
  by_line.reserve(tiles.size());
  for (const bx_matrix_tile& at : tiles) by_line.push_back(&at);
  offset_builder(set, true).build(by_line);
  std::stable_sort(by_line.begin(), by_line.end(),
                   [](const bx_matrix_tile* a, const bx_matrix_tile* b) { return a->row < b->row; });
  offset_builder(set, false).build(by_line);
}
