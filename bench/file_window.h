// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A file seen through a window that stays in the processor's cache.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace bench {

class file_window {
 public:
  /// Throws std::runtime_error when the file cannot be opened.
  explicit file_window(const std::string& file);
  file_window(const file_window&) = delete;
  file_window& operator=(const file_window&) = delete;
  ~file_window();

  /// Makes at least count bytes visible, fewer only at the end of the file, and gives the number of those that are.
  /// count is at most 4096. Behind the last byte of the file stands a NUL.
  std::size_t show(std::size_t count) {
    if (shown() < count) refill();
    return shown();
  }

  std::size_t shown() const noexcept { return static_cast<std::size_t>(end_ - at_); }
  const char* at() const noexcept { return at_; }
  std::uint64_t offset() const noexcept { return read_ - shown(); }

  /// The window goes on at this place, which is visible now.
  void pass(const char* to) noexcept { at_ = to; }

 private:
  void refill();

  int handle_;
  std::uint64_t read_ = 0;
  std::unique_ptr<char[]> buffer_;
  const char* at_;
  const char* end_;
};

}  // namespace bench
