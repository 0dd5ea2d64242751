// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// One block of memory in huge pages: what the limits of the loads decode into.
#pragma once

#include <cstddef>

namespace bench {

/// Zeroed memory, aligned to huge pages; the system may take ordinary pages where it has no huge ones.
class huge_block {
 public:
  explicit huge_block(std::size_t bytes);
  huge_block(const huge_block&) = delete;
  huge_block& operator=(const huge_block&) = delete;
  ~huge_block();

  template <class T>
  T* as() const noexcept {
    return static_cast<T*>(data_);
  }

 private:
  void* mapped_;
  std::size_t mapped_bytes_;
  void* data_;
};

}  // namespace bench
