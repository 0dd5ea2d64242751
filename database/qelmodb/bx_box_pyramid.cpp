// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_box_pyramid.h"

#include <algorithm>

bx_box_pyramid::block::block() noexcept {
  std::fill(xmin, xmin + fan, INT32_MAX);
  std::fill(xmax, xmax + fan, INT32_MIN);
  std::fill(ymin, ymin + fan, INT32_MAX);
  std::fill(ymax, ymax + fan, INT32_MIN);
}

void bx_box_pyramid::block::widen(std::size_t place, const UT_EXTREMA& box) noexcept {
  xmin[place] = std::min(xmin[place], box.xmin);
  xmax[place] = std::max(xmax[place], box.xmax);
  ymin[place] = std::min(ymin[place], box.ymin);
  ymax[place] = std::max(ymax[place], box.ymax);
}

UT_EXTREMA bx_box_pyramid::block::bounds() const noexcept {
  return {*std::min_element(xmin, xmin + fan), *std::max_element(xmax, xmax + fan), *std::min_element(ymin, ymin + fan),
          *std::max_element(ymax, ymax + fan)};
}

bx_box_pyramid::level::level(std::size_t expected, UT_SLABS& slabs) : blocks(UT_SLAB_ALLOCATOR<block>(slabs)) {
  blocks.reserve((expected + fan - 1) / fan);
}

void bx_box_pyramid::level::add(const UT_EXTREMA& box) {
  const std::size_t place = boxes % fan;
  if (place == 0) blocks.emplace_back();
  blocks.back().widen(place, box);
  ++boxes;
}

bx_box_pyramid::bx_box_pyramid(std::size_t boxes, UT_SLABS& slabs) : slabs_(slabs) {
  levels_.emplace_back(boxes, slabs);
}

void bx_box_pyramid::finish() {
  while (levels_.back().blocks.size() > 1) {
    level above(levels_.back().blocks.size(), slabs_);
    for (const block& each : levels_.back().blocks) above.add(each.bounds());
    levels_.push_back(std::move(above));
  }
}

std::size_t bx_box_pyramid::memory() const noexcept {
  std::size_t bytes = 0;
  for (const level& each : levels_) bytes += each.blocks.capacity() * sizeof(block);
  return bytes;
}
