// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Finds rectangles in the order in which they were added. Sixteen that follow each other make a block, sixteen blocks
// a block of the next level, and so on; a block that a question does not meet is passed over. The order of a tree, by
// column and row, keeps close together what lies close together, so nothing has to be sorted for it.
#pragma once

#include <bit>
#include <cstdint>
#include <vector>

#include "ut_extrema.h"
#include "ut_slab_vector.h"

class bx_box_pyramid {
 public:
  /// For about so many rectangles. The slabs are borrowed.
  bx_box_pyramid(std::size_t boxes, UT_SLABS& slabs);

  void add(const UT_EXTREMA& box) { levels_.front().add(box); }

  /// To be called once, behind the last add.
  void finish();

  /// Calls visit(number) for every rectangle that has a point in common with the box, by ascending number.
  template <class Visit>
  void for_each_meeting(const UT_EXTREMA& box, Visit visit) const;

  std::size_t memory() const noexcept;

 private:
  static constexpr std::size_t fan = 16;
  static constexpr std::size_t most_levels = 8;  // for 2^32 rectangles

  // What is free in a block meets no question, except ones that reach all of space; there its number is too high.
  struct block {
    bx_long xmin[fan];
    bx_long xmax[fan];
    bx_long ymin[fan];
    bx_long ymax[fan];

    block() noexcept;
    void widen(std::size_t place, const UT_EXTREMA& box) noexcept;
    UT_EXTREMA bounds() const noexcept;
    std::uint32_t meeting(const UT_EXTREMA& box) const noexcept;
  };

  struct level {
    UT_SLAB_VECTOR<block> blocks;
    std::size_t boxes = 0;

    level(std::size_t expected, UT_SLABS& slabs);
    void add(const UT_EXTREMA& box);
    std::uint32_t meeting(std::size_t number, const UT_EXTREMA& box) const noexcept;
  };

  UT_SLABS& slabs_;
  std::vector<level> levels_;  // the rectangles themselves first, a single block last
};

inline std::uint32_t bx_box_pyramid::block::meeting(const UT_EXTREMA& box) const noexcept {
  // A bit each from a table: compilers make vector instructions of that.
  static constexpr std::int32_t bits[fan] = {1,     2,     4,     8,     0x10,   0x20,   0x40,   0x80,
                                             0x100, 0x200, 0x400, 0x800, 0x1000, 0x2000, 0x4000, 0x8000};
  std::int32_t found = 0;
  for (std::size_t i = 0; i < fan; ++i) {
    const bool apart = (xmin[i] > box.xmax) | (xmax[i] < box.xmin) | (ymin[i] > box.ymax) | (ymax[i] < box.ymin);
    found |= apart ? 0 : bits[i];
  }
  return static_cast<std::uint32_t>(found);
}

inline std::uint32_t bx_box_pyramid::level::meeting(std::size_t number, const UT_EXTREMA& box) const noexcept {
  const std::uint32_t found = blocks[number].meeting(box);
  const std::size_t there = boxes - number * fan;
  return there >= fan ? found : found & ((1U << there) - 1);
}

template <class Visit>
void bx_box_pyramid::for_each_meeting(const UT_EXTREMA& box, Visit visit) const {
  if (levels_.front().boxes == 0) return;
  struct place {
    std::size_t block;
    std::uint32_t left;  // what in it is still to be looked at
  } path[most_levels];
  const std::size_t top = levels_.size() - 1;
  std::size_t at = top;
  path[at] = {0, levels_[at].meeting(0, box)};
  while (at <= top) {
    place& here = path[at];
    if (here.left == 0) {
      ++at;
      continue;
    }
    const std::size_t number = here.block * fan + static_cast<std::size_t>(std::countr_zero(here.left));
    here.left &= here.left - 1;
    if (at == 0) {
      visit(number);
    } else {
      --at;
      path[at] = {number, levels_[at].meeting(number, box)};
    }
  }
}
