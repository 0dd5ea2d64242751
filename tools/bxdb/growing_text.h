// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What unpacking has in common, whatever the format.
#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "unpack.h"

namespace bxdb {

/// Ends unpacking where packed data cannot be read.
[[noreturn]] inline void damaged(const std::string& name, const char* format, std::size_t at, const std::string& what) {
  throw damaged_data(name, format, at, what);
}

/// What to do with data that goes beyond a limit.
enum class beyond_limit { fails, is_left_out };

/// A text that grows up to a limit.
class growing_text {
 public:
  growing_text(const std::string& name, std::uint64_t limit, beyond_limit rest)
      : name_(name), limit_(limit), rest_(rest) {}

  const std::string& name() const noexcept { return name_; }

  /// Room behind what is there already; at least one byte.
  char* room(std::size_t& size) {
    if (used_ == text_.size()) grow();
    size = text_.size() - used_;
    return text_.data() + used_;
  }

  /// False when no more is wanted.
  bool add(std::size_t count) {
    used_ += count;
    if (used_ <= limit_) return true;
    if (rest_ == beyond_limit::fails)
      throw failure(fmt::format("{}: more than {} bytes unpacked; see --max-size", name_, limit_));
    used_ = static_cast<std::size_t>(limit_);
    return false;
  }

  std::string take() {
    text_.resize(used_);
    return std::move(text_);
  }

 private:
  void grow() {
    constexpr std::uint64_t first = std::uint64_t{1} << 18;
    // One byte beyond the limit tells data that fills it from data that exceeds it.
    const std::uint64_t size = std::min(std::max<std::uint64_t>(first, used_ + used_ / 2), limit_ + 1);
    text_.resize(static_cast<std::size_t>(size));
  }

  const std::string& name_;
  std::uint64_t limit_;
  beyond_limit rest_;
  std::string text_;
  std::size_t used_ = 0;
};

}  // namespace bxdb
