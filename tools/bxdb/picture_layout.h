// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Where things go in a picture of tiles: from units of the device, whose y grows upwards, to pixels, which are
// counted downwards.
#pragma once

#include <vector>

#include "ut_extrema.h"

namespace bxdb {

// Rectangles reach over all 32 bits: their sizes, and sums of coordinates, need more.
inline double width_of(const UT_EXTREMA& box) noexcept {
  return static_cast<double>(box.xmax) - static_cast<double>(box.xmin);
}
inline double height_of(const UT_EXTREMA& box) noexcept {
  return static_cast<double>(box.ymax) - static_cast<double>(box.ymin);
}
inline double centre_x(const UT_EXTREMA& box) noexcept { return box.xmin + width_of(box) / 2; }
inline double centre_y(const UT_EXTREMA& box) noexcept { return box.ymin + height_of(box) / 2; }

/// Whole pixels; right and bottom are the first ones outside.
struct pixel_box {
  int left;
  int top;
  int right;
  int bottom;

  int width() const noexcept { return right - left; }
  int height() const noexcept { return bottom - top; }
};

/// The part of a picture that shows the tiles to scale. Pixels are relative to its upper left corner.
class plot_scale {
 public:
  /// There is at least one box. The scale gives a column about as much room as a name of a few letters needs, as
  /// long as the plot stays of a size that can be looked at.
  plot_scale(const std::vector<UT_EXTREMA>& boxes, int columns);

  double x(double device_x) const noexcept { return (device_x - left_) * scale_; }
  double y(double device_y) const noexcept { return (top_ - device_y) * scale_; }

  /// The pixels nearest to a box, at least one each way: neighbours leave no gap, and nothing vanishes.
  pixel_box pixels(const UT_EXTREMA& box) const noexcept;

  int width() const noexcept { return width_; }
  int height() const noexcept { return height_; }

  /// The shorter sides of the boxes in pixels: their median.
  double usual_size() const noexcept { return usual_size_; }

 private:
  double left_;  // of all boxes, in units of the device
  double top_;
  double scale_;  // pixels a unit
  int width_;
  int height_;
  double usual_size_;
};

/// Which of the labels along an edge are shown, so that no two of them overlap: every first, second, fifth, tenth,
/// twentieth... as fits. Label i is centred at centres[i], which should ascend, and needs the room sizes[i].
std::vector<std::size_t> shown_labels(const std::vector<double>& centres, const std::vector<double>& sizes);

}  // namespace bxdb
