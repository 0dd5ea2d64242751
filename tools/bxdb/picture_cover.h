// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What remains in sight of boxes that lie on each other.
#pragma once

#include <cstddef>
#include <vector>

#include "picture_layout.h"

namespace bxdb {

/// The pixels of a plot that no box lies on yet. Boxes are laid from the uppermost one down.
class pixel_cover {
 public:
  pixel_cover(int width, int height);

  /// Lays a box below those before; true when something of it can be seen. Each pixel is taken once, so the cost of all
  /// boxes is that of the plot and of the boxes' heights.
  bool take(const pixel_box& box);

 private:
  /// The first free pixel of a row from x on; the width when there is none.
  int free_from(std::size_t row, int x);
  bool take_row(std::size_t row, int left, int right);

  int width_;
  int height_;
  std::size_t free_;
  // For each pixel of each row, and one behind the row's end: itself while it is free, else one further right before
  // which none is free.
  std::vector<int> next_;
};

}  // namespace bxdb
