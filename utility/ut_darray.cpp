// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_darray.h"

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

#include "ut_msgman.h"

namespace {

// Identifies the array module to the message manager; only its identity matters.
constexpr char array_module_tag[] = "\xC1\xD2\xD2\xC1\xD9\xB5\xB1";

}  // namespace

UT_BASE_ARRAY::UT_BASE_ARRAY(const UT_BASE_ARRAY& other) : step_(std::abs(other.step_)) {
  ut_msgman->msgfatal("Copy constructor not allowed", array_module_tag, "darray", __LINE__, "hdrfile", 1, 0);
}

void UT_BASE_ARRAY::empty() noexcept {
  if (owns_storage()) std::free(data_);
  data_ = nullptr;
  count_ = 0;
  capacity_ = 0;
  step_ = std::abs(step_);
}

void UT_BASE_ARRAY::swap_with(UT_BASE_ARRAY& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(count_, other.count_);
  std::swap(capacity_, other.capacity_);
  std::swap(step_, other.step_);
}

void UT_BASE_ARRAY::own(std::size_t size) {
  if (owns_storage()) return;
  void* copy = nullptr;
  if (count_ != 0) {
    copy = std::malloc(static_cast<std::size_t>(count_) * size);
    if (copy == nullptr) throw std::bad_alloc();
    std::memcpy(copy, data_, static_cast<std::size_t>(count_) * size);
  }
  data_ = copy;
  capacity_ = count_;
  step_ = -step_;
}

void UT_BASE_ARRAY::reserve_exactly(bx_long count, std::size_t size) {
  if (count <= capacity_) return;
  own(size);
  void* larger = std::realloc(data_, static_cast<std::size_t>(count) * size);
  if (larger == nullptr) throw std::bad_alloc();
  data_ = larger;
  capacity_ = count;
}

void UT_BASE_ARRAY::grow_for(bx_long count, std::size_t size) {
  if (count_ == INT32_MAX) throw std::bad_alloc();
  // The step alone would make a million insertions quadratic, so growth is also proportional.
  const std::int64_t stepped = std::int64_t{capacity_} + std::max<std::int64_t>(std::abs(step_), capacity_ / 2);
  reserve_exactly(static_cast<bx_long>(std::min<std::int64_t>(std::max<std::int64_t>(stepped, count), INT32_MAX)),
                  size);
}
