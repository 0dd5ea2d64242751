// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The rectangles of a device by the cells that they touch, of which there are as many as tiles: the limit of finding
// instances by position.
#pragma once

#include <cstdint>
#include <vector>

#include "questions.h"

namespace bench {

class cell_array {
 public:
  cell_array(const flat_tree& flat, std::int64_t lines);

  /// The instances that cover the point, without the root.
  void count_covers(const BX_POINT& point, cover_sums& sums) const noexcept {
    const std::size_t cell = column_of(point.x) * lines_ + row_of(point.y);
    for (std::size_t i = begins_[cell]; i < begins_[cell + 1]; ++i) {
      const rectangle& r = rectangles_[i];
      if (r.xmin <= point.x && point.x <= r.xmax && r.ymin <= point.y && point.y <= r.ymax) sums.count(r.inst);
    }
  }

 private:
  struct rectangle {
    std::int32_t xmin, ymin, xmax, ymax;
    const BX_INSTANCE* inst;
  };

  std::size_t column_of(std::int32_t x) const noexcept { return static_cast<std::uint32_t>(x - left_) / width_; }
  std::size_t row_of(std::int32_t y) const noexcept { return static_cast<std::uint32_t>(y - bottom_) / height_; }

  template <class Visit>
  void for_cells_of(const flat_instance& inst, Visit visit) const;

  std::size_t lines_;
  std::int32_t left_;
  std::int32_t bottom_;
  std::uint32_t width_;
  std::uint32_t height_;
  std::vector<std::uint32_t> begins_;
  std::vector<rectangle> rectangles_;
};

}  // namespace bench
