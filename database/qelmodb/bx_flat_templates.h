// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Wire templates of switch matrices as tables, for millions of lookups. The ordered maps that clients see answer one
// question well, but each costs a walk through memory.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <vector>

#include "bx_matrix_nodes.h"
#include "bx_wire_template.h"

/// Indices of a range map, from up to but not including to.
struct bx_index_span {
  std::uint16_t from = 0;
  std::uint16_t to = 0;

  static bx_index_span of(std::uint16_t i) noexcept { return {i, static_cast<std::uint16_t>(i + 1)}; }
  bool covers(std::uint16_t i) const noexcept { return from <= i && i < to; }
};

/// A run of a range map, or a part of one.
template <class T>
struct bx_known_run {
  bx_index_span where;
  T value{};
};

/// The runs of a range map in one piece of memory.
template <class T>
class bx_flat_map {
 public:
  explicit bx_flat_map(const RANGE_MAP<T>& map) : size_(map.size) {
    starts_.reserve(map.ranges.size());
    values_.reserve(map.ranges.size());
    for (const auto& [start, value] : map.ranges) {
      starts_.push_back(start);
      values_.push_back(value);
    }
  }

  /// The run of an index. Where there is none, one that covers nothing.
  bx_known_run<T> run_at(std::uint16_t i) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), i);
    if (i >= size_ || after == starts_.begin()) return {};
    const std::uint16_t to = after != starts_.end() ? std::min(*after, size_) : size_;
    return {{*std::prev(after), to}, values_[static_cast<std::size_t>(after - starts_.begin()) - 1]};
  }

 private:
  std::uint16_t size_;
  std::vector<std::uint16_t> starts_;
  std::vector<T> values_;
};

/// The values of several range maps of one size for every index, where runs are so short that searching them would cost
/// more than the memory. Values lie in the order in which they are asked for.
template <class T>
class bx_value_table {
 public:
  /// along_first: for an index and then by map; otherwise for a map and then by index.
  bx_value_table(const RANGE_MAP<T>* maps, std::size_t count, bool along_first) {
    if (count == 0 || maps[0].size == 0 || !are_dense(maps, count)) return;
    size_ = maps[0].size;
    along_step_ = along_first ? count : 1;
    map_step_ = along_first ? 1 : size_;
    values_.resize(count * size_);
    for (std::size_t k = 0; k < count; ++k) fill(maps[k].ranges, values_.data() + k * map_step_);
  }

  /// The place of an index in any of the maps; false when they are no table, or do not have the index.
  bool covers(std::uint16_t along) const noexcept { return along < size_; }

  const T& at(std::size_t map, std::uint16_t along) const noexcept {
    return values_[map * map_step_ + along * along_step_];
  }

 private:
  static constexpr std::size_t short_run = 8;

  static bool are_dense(const RANGE_MAP<T>* maps, std::size_t count) {
    std::size_t runs = 0;
    for (std::size_t k = 0; k < count; ++k) {
      // Others come from damaged files.
      if (maps[k].ranges.empty() || maps[k].ranges.begin()->first != 0 || maps[k].size != maps[0].size) return false;
      runs += maps[k].ranges.size();
    }
    return runs * short_run >= count * maps[0].size;
  }

  void fill(const std::map<std::uint16_t, T>& runs, T* values) {
    for (auto run = runs.begin(); run != runs.end(); ++run) {
      const auto next = std::next(run);
      const std::size_t end = next != runs.end() ? std::min<std::size_t>(next->first, size_) : size_;
      for (std::size_t i = run->first; i < end; ++i) values[i * along_step_] = run->second;
    }
  }

  std::size_t size_ = 0;
  std::size_t map_step_ = 0;
  std::size_t along_step_ = 0;
  std::vector<T> values_;
};

/// A wire template ready for many lookups. Switch matrices are met column by column: a template that runs along rows is
/// asked for another row each time, and comes back to the same row a column further. So each offset map has the run
/// that was last found in it, which lies apart from the map: those of all templates should stay in the cache.
class bx_flat_template {
 public:
  explicit bx_flat_template(const WIRE_TEMPLATE_SM& of)
      : wire_(of),
        lines_(&of.index_map, 1, false),
        index_map_(of.index_map),
        table_(of.offset_maps, of.num_offset_map, of.span_dir != 1),
        last_offsets_(of.num_offset_map) {
    offset_maps_.reserve(of.num_offset_map);
    if (table_.covers(0)) return;
    for (int k = 0; k < of.num_offset_map; ++k) offset_maps_.emplace_back(of.offset_maps[k]);
  }

  const WIRE_TEMPLATE_SM& wire() const noexcept { return wire_; }

  /// Which offset map a line has, and for what other lines that is known. A line that the template does not cover is
  /// not among these.
  bx_known_run<std::uint16_t> map_of(std::uint16_t line) const {
    if (lines_.covers(line)) return {bx_index_span::of(line), lines_.at(0, line)};
    return index_map_.run_at(line);
  }

  bool has_map(std::uint16_t map) const noexcept { return map < last_offsets_.size(); }

  /// The offset at an index of an offset map, likewise.
  bx_known_run<BX_POINT> offset_at(std::uint16_t map, std::uint16_t along) {
    if (table_.covers(along)) return {bx_index_span::of(along), table_.at(map, along)};
    if (offset_maps_.empty()) return {};
    bx_known_run<BX_POINT>& last = last_offsets_[map];
    if (!last.where.covers(along)) last = offset_maps_[map].run_at(along);
    return last;
  }

 private:
  const WIRE_TEMPLATE_SM& wire_;
  bx_value_table<std::uint16_t> lines_;
  bx_flat_map<std::uint16_t> index_map_;
  bx_value_table<BX_POINT> table_;
  std::vector<bx_known_run<BX_POINT>> last_offsets_;
  std::vector<bx_flat_map<BX_POINT>> offset_maps_;
};

/// What came of looking an offset up: it was found, the index map leads beyond the offset maps, or a map does not cover
/// the place.
enum class bx_lookup_result { found, leads_nowhere, not_covered };

/// The offset that was last found for a wire template, and the columns and rows where it holds: for the next switch
/// matrix, too, when the template runs along columns. Those of all templates lie together.
struct bx_strand {
  explicit bx_strand(bx_flat_template& of) : tmplt(&of), name(of.wire().name), origin(of.wire()) {}

  bool holds_at(std::uint16_t column, std::uint16_t row) const noexcept {
    return columns.covers(column) && rows.covers(row);
  }

  /// Looks the offset of a place up. Reports nothing.
  bx_lookup_result move_to(std::uint16_t column, std::uint16_t row) {
    const bool by_column = tmplt->wire().span_dir == 1;
    const std::uint16_t line = by_column ? column : row;
    const std::uint16_t place = by_column ? row : column;
    const bx_known_run<std::uint16_t> lines = tmplt->map_of(line);
    if (!lines.where.covers(line)) return bx_lookup_result::not_covered;
    if (!tmplt->has_map(lines.value)) return bx_lookup_result::leads_nowhere;
    const bx_known_run<BX_POINT> places = tmplt->offset_at(lines.value, place);
    if (!places.where.covers(place)) return bx_lookup_result::not_covered;
    // Number by number. Reading a span as one just after writing its two halves would stall on store forwarding.
    bx_index_span& across = by_column ? columns : rows;
    bx_index_span& along = by_column ? rows : columns;
    across.from = lines.where.from;
    across.to = lines.where.to;
    along.from = places.where.from;
    along.to = places.where.to;
    offset = places.value;
    return bx_lookup_result::found;
  }

  bx_flat_template* tmplt;
  char* name;
  bx_node_origin origin;
  bx_index_span columns;
  bx_index_span rows;
  BX_POINT offset;
};
