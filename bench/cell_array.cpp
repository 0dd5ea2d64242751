// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "cell_array.h"

#include <algorithm>

namespace bench {

namespace {

std::uint32_t cell_size(std::int32_t from, std::int32_t to, std::size_t lines) {
  return (static_cast<std::uint32_t>(to - from) + 1) / static_cast<std::uint32_t>(lines) + 1;
}

}  // namespace

cell_array::cell_array(const flat_tree& flat, std::int64_t lines)
    : lines_(static_cast<std::size_t>(lines)),
      left_(flat.instances[0].xmin),
      bottom_(flat.instances[0].ymin),
      width_(cell_size(left_, flat.instances[0].xmax, lines_)),
      height_(cell_size(bottom_, flat.instances[0].ymax, lines_)),
      begins_(lines_ * lines_ + 1) {
  for (std::size_t i = 1; i < flat.instances.size(); ++i) {
    for_cells_of(flat.instances[i], [this](std::size_t cell) { ++begins_[cell + 1]; });
  }
  for (std::size_t cell = 0; cell < lines_ * lines_; ++cell) begins_[cell + 1] += begins_[cell];
  rectangles_.resize(begins_.back());
  std::vector<std::uint32_t> next(begins_.begin(), begins_.end() - 1);
  for (std::size_t i = 1; i < flat.instances.size(); ++i) {
    const flat_instance& inst = flat.instances[i];
    for_cells_of(inst, [&](std::size_t cell) {
      rectangles_[next[cell]++] = {inst.xmin, inst.ymin, inst.xmax, inst.ymax, flat.origins[i]};
    });
  }
}

// Points are asked for inside of the root only.
template <class Visit>
void cell_array::for_cells_of(const flat_instance& inst, Visit visit) const {
  const std::size_t last_column = std::min(lines_ - 1, column_of(std::max(left_, inst.xmax)));
  const std::size_t last_row = std::min(lines_ - 1, row_of(std::max(bottom_, inst.ymax)));
  for (std::size_t column = column_of(std::max(left_, inst.xmin)); column <= last_column; ++column) {
    for (std::size_t row = row_of(std::max(bottom_, inst.ymin)); row <= last_row; ++row) visit(column * lines_ + row);
  }
}

}  // namespace bench
