// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A vector that lies on huge pages once it is large: touching it for the first time, and in any order later, then costs
// a fraction.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "ut_osmemory.h"

template <class T>
class UT_LARGE_ALLOCATOR {
 public:
  using value_type = T;

  UT_LARGE_ALLOCATOR() noexcept = default;
  template <class Other>
  // NOLINTNEXTLINE(google-explicit-constructor): allocators convert
  UT_LARGE_ALLOCATOR(const UT_LARGE_ALLOCATOR<Other>&) noexcept {}

  T* allocate(std::size_t count) {
    if (count > (SIZE_MAX - ut_huge_page) / sizeof(T)) throw std::bad_alloc();
    if (!is_large(count)) return static_cast<T*>(::operator new(count * sizeof(T)));
    void* memory = ut_fresh_memory(size_of(count));
    if (memory == nullptr) throw std::bad_alloc();
    ut_use_huge_pages(memory, size_of(count));
    return static_cast<T*>(memory);
  }

  void deallocate(T* memory, std::size_t count) noexcept {
    if (is_large(count)) {
      ut_release_memory(memory, size_of(count));
    } else {
      ::operator delete(memory);
    }
  }

  friend bool operator==(const UT_LARGE_ALLOCATOR&, const UT_LARGE_ALLOCATOR&) noexcept { return true; }

 private:
  // From here on the part of the last page that is wasted is small.
  static bool is_large(std::size_t count) noexcept { return count * sizeof(T) >= 4 * ut_huge_page; }

  static std::size_t size_of(std::size_t count) { return ut_round_up(count * sizeof(T), ut_huge_page); }
};

template <class T>
using UT_LARGE_VECTOR = std::vector<T, UT_LARGE_ALLOCATOR<T>>;
