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
#include "ut_slab_vector.h"

class bx_node_runs {
 public:
  /// For the wires of these instances, which are borrowed like the slabs; wires is their number. Chooses by a sample
  /// how large the boxes may be.
  bx_node_runs(std::span<BX_INSTANCE* const> instances, std::size_t wires, UT_SLABS& slabs);

  /// Adds the wires of instances[number], whose names are the list of this number; to be called by ascending numbers
  /// of instances.
  void add(std::uint32_t number, std::uint32_t list);

  /// Does the same in one look at the wires when they have these names, those of the list, and lie as those of the last
  /// instance that had it did. False when they do not, and nothing is added.
  bool add_alike(std::uint32_t number, std::uint32_t list, const char* const* names);

  /// To be called once, behind the last add.
  void finish();

  /// Calls visit(wire, instance) for every wire at (x, y), by number of the instance and then in the order of its list.
  template <class Visit>
  void for_each_at(bx_long x, bx_long y, Visit visit) const;

  std::size_t memory() const noexcept;

 private:
  static constexpr bx_long longest = 256;  // what is quickly looked through
  static constexpr int size_bits = 12;

  // There are many of these, and memory that is touched for the first time is what building spends most on.
  struct run {
    BX_WIRE* wires;
    std::uint32_t instance;
    bx_long xmin;
    bx_long ymin;
    std::uint32_t others : 8;         // wires beside the first one
    std::uint32_t width : size_bits;  // of the box, in units of 2^scale_
    std::uint32_t height : size_bits;

    bx_long count() const noexcept { return static_cast<bx_long>(others) + 1; }
  };

  // False only when no wire of the run is at (x, y).
  bool may_hold(const run& each, bx_long x, bx_long y) const noexcept {
    const bx_ulong right = static_cast<bx_ulong>(x) - static_cast<bx_ulong>(each.xmin);
    const bx_ulong up = static_cast<bx_ulong>(y) - static_cast<bx_ulong>(each.ymin);
    return right >> scale_ <= each.width && up >> scale_ <= each.height;
  }

  /// The runs filed under four neighbouring cells, in order.
  class nearby;

  /// How many wires each run had in the last instance of a list.
  struct habit {
    std::uint32_t list = UINT32_MAX;
    std::vector<bx_long> counts = {};
  };

  bool fits(const UT_EXTREMA& box) const noexcept;
  template <class Take>
  void split(BX_WIRE* first, const BX_WIRE* end, Take take) const;
  void choose_box_size();
  void add_run(BX_WIRE* first, bx_long count, std::uint32_t instance, const UT_EXTREMA& box);

  // What the place of the cell (column, row) is taken from, whatever the size of the table.
  std::uint32_t hash_of(bx_long column, bx_long row) const noexcept {
    const std::uint64_t cell = std::uint64_t{static_cast<bx_ulong>(column)} << 32 | static_cast<bx_ulong>(row);
    return static_cast<std::uint32_t>((cell * factor_) >> 32);
  }

  // The place, in the table, of the cell (column, row).
  std::size_t place_of(bx_long column, bx_long row) const noexcept { return hash_of(column, row) >> table_shift_; }

  std::span<BX_INSTANCE* const> instances_;
  std::uint64_t factor_;  // odd and secret: nobody can make nodes that all meet in one place of the table
  int shift_ = 0;         // cells are 2^shift_ wide and high, and boxes smaller
  int scale_ = 0;
  std::vector<habit> habits_;
  UT_LARGE_VECTOR<run> runs_;
  UT_SLAB_VECTOR<std::uint32_t> hashes_;  // of the cells in which runs begin; of no use once all are filed
  int table_shift_ = 31;
  UT_SLAB_VECTOR<std::uint32_t> begins_;  // in filed_, of each place, and the end of the last
  UT_SLAB_VECTOR<std::uint32_t> filed_;   // numbers of runs, ascending within a place
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
      if (!may_hold(in, x, y)) continue;
      bx_fetch_wires(in.wires, std::min(in.count(), most_fetched));
      ++count;
    }
    for (std::size_t i = 0; i < count; ++i) {
      const run& in = runs_[pending[i]];
      for (BX_WIRE* wire = in.wires; wire != in.wires + in.count(); ++wire) {
        if (wire->nodex == x && wire->nodey == y) visit(wire, instances_[in.instance]);
      }
    }
  }
}
