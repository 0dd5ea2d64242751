// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Vectors of one owner that lie together in slabs. What a vector outgrows comes back with the slabs only: it is made as
// large as it will be.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "ut_slabs.h"

template <class T>
class UT_SLAB_ALLOCATOR {
 public:
  using value_type = T;

  /// The slabs are borrowed, and outlive the vector.
  explicit UT_SLAB_ALLOCATOR(UT_SLABS& slabs) noexcept : slabs_(&slabs) {}
  template <class Other>
  // NOLINTNEXTLINE(google-explicit-constructor): allocators convert
  UT_SLAB_ALLOCATOR(const UT_SLAB_ALLOCATOR<Other>& other) noexcept : slabs_(&other.slabs()) {}

  T* allocate(std::size_t count) {
    if (count > SIZE_MAX / sizeof(T)) throw std::bad_alloc();
    return static_cast<T*>(slabs_->take(count * sizeof(T)));
  }

  void deallocate(T*, std::size_t) noexcept {}

  UT_SLABS& slabs() const noexcept { return *slabs_; }

  friend bool operator==(const UT_SLAB_ALLOCATOR& a, const UT_SLAB_ALLOCATOR& b) noexcept {
    return a.slabs_ == b.slabs_;
  }

 private:
  UT_SLABS* slabs_;
};

template <class T>
using UT_SLAB_VECTOR = std::vector<T, UT_SLAB_ALLOCATOR<T>>;
