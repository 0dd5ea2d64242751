// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "picture_layout.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace bxdb {
namespace {

constexpr double column_room = 56.0;
constexpr double least_width = 960.0;
constexpr double most_width = 2000.0;
constexpr double most_height = 2400.0;

double median(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// The usual distance from one column of boxes to the next, in units; 0 when there is one column only.
double usual_pitch(const std::vector<UT_EXTREMA>& boxes) {
  std::vector<double> lefts;
  lefts.reserve(boxes.size());
  for (const UT_EXTREMA& box : boxes) lefts.push_back(box.xmin);
  std::sort(lefts.begin(), lefts.end());
  lefts.erase(std::unique(lefts.begin(), lefts.end()), lefts.end());
  std::vector<double> pitches;
  for (std::size_t i = 1; i < lefts.size(); ++i) pitches.push_back(lefts[i] - lefts[i - 1]);
  return median(std::move(pitches));
}

/// A scale that is a little smaller, if that makes columns a whole number of pixels wide: else small tiles of one
/// size would be drawn in two, which shows as a pattern that is not there.
double even_scale(double scale, double pitch) noexcept {
  const double pixels = scale * pitch;
  return pixels < 1.5 ? scale : scale * std::floor(pixels) / pixels;
}

}  // namespace

plot_scale::plot_scale(const std::vector<UT_EXTREMA>& boxes, int columns) {
  constexpr double most = std::numeric_limits<double>::max();
  left_ = most;
  top_ = -most;
  double right = -most;
  double bottom = most;
  for (const UT_EXTREMA& box : boxes) {
    left_ = std::min<double>(left_, box.xmin);
    right = std::max<double>(right, box.xmax);
    bottom = std::min<double>(bottom, box.ymin);
    top_ = std::max<double>(top_, box.ymax);
  }
  const double wide = std::max(right - left_, 1.0);
  const double high = std::max(top_ - bottom, 1.0);
  const double wanted = std::clamp(column_room * columns, least_width, most_width);
  scale_ = even_scale(std::min(wanted / wide, most_height / high), usual_pitch(boxes));
  width_ = static_cast<int>(std::ceil(wide * scale_));
  height_ = static_cast<int>(std::ceil(high * scale_));

  std::vector<double> sizes;
  sizes.reserve(boxes.size());
  for (const UT_EXTREMA& box : boxes) {
    sizes.push_back(std::min(width_of(box), height_of(box)) * scale_);
  }
  usual_size_ = median(std::move(sizes));
}

pixel_box plot_scale::pixels(const UT_EXTREMA& box) const noexcept {
  const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
  pixel_box drawn{whole(x(box.xmin)), whole(y(box.ymax)), whole(x(box.xmax)), whole(y(box.ymin))};
  drawn.left = std::min(drawn.left, width_ - 1);
  drawn.top = std::min(drawn.top, height_ - 1);
  drawn.right = std::max(drawn.right, drawn.left + 1);
  drawn.bottom = std::max(drawn.bottom, drawn.top + 1);
  return drawn;
}

namespace {

/// 1, 2, 5, 10, 20...
std::size_t next_step(std::size_t step) noexcept {
  std::size_t decade = 1;
  while (decade * 10 <= step) decade *= 10;
  return step / decade == 2 ? 5 * decade : step / decade == 5 ? 10 * decade : 2 * decade;
}

/// The least step with which labels of the usual distance do not overlap.
std::size_t fitting_step(const std::vector<double>& centres, double room) {
  std::vector<double> gaps;
  for (std::size_t i = 1; i < centres.size(); ++i) gaps.push_back(centres[i] - centres[i - 1]);
  const double gap = median(std::move(gaps));
  std::size_t step = 1;
  while (step < centres.size() && gap * static_cast<double>(step) < room) step = next_step(step);
  return step;
}

}  // namespace

std::vector<std::size_t> shown_labels(const std::vector<double>& centres, const std::vector<double>& sizes) {
  std::vector<std::size_t> shown;
  if (centres.empty()) return shown;
  const std::size_t step = fitting_step(centres, *std::max_element(sizes.begin(), sizes.end()));
  double free = std::numeric_limits<double>::lowest();
  for (std::size_t i = 0; i < centres.size(); i += step) {
    if (centres[i] - sizes[i] / 2 < free) continue;
    shown.push_back(i);
    free = centres[i] + sizes[i] / 2;
  }
  return shown;
}

}  // namespace bxdb
