// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_slabs.h"

#include <algorithm>
#include <new>

#include "ut_osmemory.h"
#include "ut_sanitizer.h"

namespace {

constexpr std::size_t alignment = 8;
// What is not touched of a piece costs address space only.
constexpr std::size_t largest_piece = std::size_t{64} << 20;

}  // namespace

UT_SLABS::~UT_SLABS() {
  for (const piece& each : pieces_) ut_release_memory(each.start, each.size);
}

void* UT_SLABS::take(std::size_t bytes) {
  const std::size_t rounded = ut_round_up(bytes, alignment) + ut_red_zone;
  if (rounded > left_) add_piece(rounded);
  char* taken = at_;
  at_ += rounded;
  left_ -= rounded;
  ut_allow(taken, bytes);
  return taken;
}

void UT_SLABS::expect(std::size_t bytes) noexcept {
  next_size_ = std::clamp(bytes, next_size_, std::max(next_size_, largest_piece));
}

void UT_SLABS::trim() noexcept {
  if (left_ != 0) ut_drop_unused(at_, left_);
}

void UT_SLABS::add_piece(std::size_t least) {
  std::size_t size = std::max(least, next_size_);
  if (size > ut_huge_page) size = ut_round_up(size, ut_huge_page);
  pieces_.reserve(pieces_.size() + 1);
  void* start = ut_fresh_memory(size);
  if (start == nullptr) throw std::bad_alloc();
  if (size >= ut_huge_page) ut_use_huge_pages(start, size);
  ut_forbid(start, size);
  pieces_.push_back({start, size});
  at_ = static_cast<char*>(start);
  left_ = size;
  next_size_ = std::min(next_size_ * 2, largest_piece);
}
