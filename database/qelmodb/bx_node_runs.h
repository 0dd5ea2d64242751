// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Finds the wires at a node. Wires of an instance that follow each other, being sorted by name, mostly lie close
// together: E1BEG0, E1BEG1, ... A run of them with the box around their nodes is filed under the cell of the grid in
// which the box begins. Runs are some ten times fewer than wires, which is what makes them quick to build.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <vector>

#include "bx_fetch.h"
#include "bx_instance.h"
#include "ut_arith.h"
#include "ut_large_vector.h"

class bx_node_runs {
 public:
  /// For the wires of these instances, which are borrowed; wires is their number. Chooses by a sample how large the
  /// boxes may be.
  bx_node_runs(std::span<BX_INSTANCE* const> instances, std::size_t wires);

  /// Adds the wires of instances[number]; to be called by ascending numbers.
  void add(std::uint32_t number);

  /// To be called once, behind the last add.
  void finish();

  /// Calls visit(wire, instance) for every wire at (x, y), by number of the instance and then in the order of its list.
  template <class Visit>
  void for_each_at(bx_long x, bx_long y, Visit visit) const;

  std::size_t memory() const noexcept;

 private:
  struct run {
    BX_WIRE* wires;
    bx_long count;
    std::uint32_t instance;
    UT_EXTREMA box;

    bool covers(bx_long x, bx_long y) const noexcept {
      return box.xmin <= x && x <= box.xmax && box.ymin <= y && y <= box.ymax;
    }
  };

  /// The runs filed under four neighbouring cells, in order.
  class nearby;

  template <class Take>
  void split(std::uint32_t number, Take take) const;
  void choose_box_size();

  // The place, in the table, of the cell (column, row).
  std::size_t place_of(bx_long column, bx_long row) const noexcept {
    const std::uint64_t cell = std::uint64_t{static_cast<bx_ulong>(column)} << 32 | static_cast<bx_ulong>(row);
    return (cell * factor_) >> table_shift_;
  }

  std::span<BX_INSTANCE* const> instances_;
  std::uint64_t factor_;  // odd and secret: nobody can make nodes that all meet in one place of the table
  int shift_ = 0;         // cells are 2^shift_ wide and high, and boxes smaller
  UT_LARGE_VECTOR<run> runs_;
  int table_shift_ = 63;
  UT_LARGE_VECTOR<std::uint32_t> begins_;  // in filed_, of each place, and the end of the last
  UT_LARGE_VECTOR<std::uint32_t> filed_;   // numbers of runs, ascending within a place
};

// A box is smaller than a cell, so one that covers a point begins in the cell of the point, in the one to the left, the
// one below, or the one below that to the left.
class bx_node_runs::nearby {
 public:
  nearby(const bx_node_runs& of, bx_long x, bx_long y) noexcept {
    for (const bx_long column : {x >> of.shift_, ut_wrap_sub(x >> of.shift_, 1)}) {
      for (const bx_long row : {y >> of.shift_, ut_wrap_sub(y >> of.shift_, 1)}) add(of, of.place_of(column, row));
    }
  }

  /// The number of the next run; false when there is none left.
  bool next(std::uint32_t& number) noexcept {
    list* least = nullptr;
    for (list& each : lists_) {
      if (each.at != each.end && (least == nullptr || *each.at < *least->at)) least = &each;
    }
    if (least == nullptr) return false;
    number = *least->at++;
    return true;
  }

 private:
  struct list {
    const std::uint32_t* at = nullptr;
    const std::uint32_t* end = nullptr;
  };

  // Two cells can have one place.
  void add(const bx_node_runs& of, std::size_t place) noexcept {
    for (std::size_t i = 0; i < count_; ++i) {
      if (places_[i] == place) return;
    }
    lists_[count_] = {of.filed_.data() + of.begins_[place], of.filed_.data() + of.begins_[place + 1]};
    places_[count_++] = place;
  }

  list lists_[4];
  std::size_t places_[4]{};
  std::size_t count_ = 0;
};

template <class Visit>
void bx_node_runs::for_each_at(bx_long x, bx_long y, Visit visit) const {
  if (runs_.empty()) return;
  // The wires of a run are somewhere in memory: many runs are on their way before the first of them is needed.
  constexpr std::size_t together = 16;
  constexpr bx_long most_fetched = 12;
  std::uint32_t pending[together];
  std::size_t count = 0;
  nearby numbers(*this, x, y);
  bool more = true;
  while (more) {
    for (count = 0; count < together;) {
      more = numbers.next(pending[count]);
      if (!more) break;
      const run& in = runs_[pending[count]];
      if (!in.covers(x, y)) continue;
      bx_fetch_wires(in.wires, std::min<bx_long>(in.count, most_fetched));
      ++count;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const run& in = runs_[pending[i]];
      for (BX_WIRE* wire = in.wires; wire != in.wires + in.count; ++wire) {
        if (wire->nodex == x && wire->nodey == y) visit(wire, instances_[in.instance]);
      }
    }
  }
}
