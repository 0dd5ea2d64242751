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

/// A text that grows up to a limit.
class growing_text {
 public:
  growing_text(const std::string& name, std::uint64_t limit) : name_(name), limit_(limit) {}

  /// Room behind what is there already; at least one byte.
  char* room(std::size_t& size) {
    if (used_ == text_.size()) grow();
    size = text_.size() - used_;
    return text_.data() + used_;
  }

  void add(std::size_t count) {
    used_ += count;
    if (used_ > limit_) throw failure(fmt::format("{}: more than {} bytes unpacked; see --max-size", name_, limit_));
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
  std::string text_;
  std::size_t used_ = 0;
};

}  // namespace bxdb
