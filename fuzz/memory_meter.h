// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How much memory a piece of work holds at most, as the address sanitizer's allocator sees it.
#pragma once

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <cstddef>

namespace fuzz {

/// Counts while an object of it lives; one at a time, and one thread.
class memory_meter {
 public:
  memory_meter() {
    [[maybe_unused]] static const int installed = __sanitizer_install_malloc_and_free_hooks(&allocated, &freed);
    held_ = peak_ = 0;
    counting_ = true;
  }
  memory_meter(const memory_meter&) = delete;
  memory_meter& operator=(const memory_meter&) = delete;
  ~memory_meter() { counting_ = false; }

  /// Bytes held at most since the object was made.
  std::ptrdiff_t peak() const { return peak_; }

 private:
  static void allocated(const volatile void* /*memory*/, std::size_t size) {
    if (!counting_) return;
    held_ += static_cast<std::ptrdiff_t>(size);
    peak_ = std::max(peak_, held_);
  }

  static void freed(const volatile void* memory) {
    if (counting_ && memory != nullptr) {
      held_ -= static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(const_cast<const void*>(memory)));
    }
  }

  static inline bool counting_ = false;
  static inline std::ptrdiff_t held_ = 0;
  static inline std::ptrdiff_t peak_ = 0;
};

}  // namespace fuzz
