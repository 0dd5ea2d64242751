// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "picture_cover.h"

#include <algorithm>
#include <numeric>

namespace bxdb {

pixel_cover::pixel_cover(int width, int height)
    : width_(width),
      height_(height),
      free_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)),
      next_((static_cast<std::size_t>(width) + 1) * static_cast<std::size_t>(height)) {
  const std::ptrdiff_t length = std::ptrdiff_t{width} + 1;
  for (auto row = next_.begin(); row != next_.end(); row += length) std::iota(row, row + length, 0);
}

bool pixel_cover::take(const pixel_box& box) {
  if (free_ == 0) return false;
  const int left = std::max(box.left, 0);
  const int right = std::min(box.right, width_);
  bool seen = false;
  for (int row = std::max(box.top, 0); row < std::min(box.bottom, height_); ++row) {
    if (take_row(static_cast<std::size_t>(row), left, right)) seen = true;
  }
  return seen;
}

int pixel_cover::free_from(std::size_t row, int x) {
  int* const next = next_.data() + row * (static_cast<std::size_t>(width_) + 1);
  int found = x;
  while (next[found] != found) found = next[found];
  // Whoever asks again has it shorter.
  while (next[x] != found) {
    const int further = next[x];
    next[x] = found;
    x = further;
  }
  return found;
}

bool pixel_cover::take_row(std::size_t row, int left, int right) {
  int* const next = next_.data() + row * (static_cast<std::size_t>(width_) + 1);
  bool seen = false;
  for (int x = free_from(row, left); x < right; x = free_from(row, x)) {
    next[x] = x + 1;
    --free_;
    seen = true;
  }
  return seen;
}

}  // namespace bxdb
