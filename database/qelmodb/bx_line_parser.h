// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string_view>

#include "bx_records.h"

/// More bytes than a wire's line has that bx_line_parser takes: label, quoted name, two numbers, line end.
inline constexpr std::size_t bx_longest_wire_line = bx_key_size + 60;

/// Takes a line apart that is just as writers make it. The bytes behind its end must be readable as far as
/// bx_longest_wire_line; each take that gives false leaves the place unchanged.
class bx_line_parser {
 public:
  explicit bx_line_parser(const char* line) noexcept : at_(line) {}

  const char* at() const noexcept { return at_; }
  void pass(std::size_t count) noexcept { at_ += count; }

  bool take(std::string_view text) noexcept {
    if (std::string_view(at_, text.size()) != text) return false;
    at_ += text.size();
    return true;
  }

  /// A decimal number of at most nine digits, which needs no look at overflow.
  bool take(bx_long& number) noexcept {
    constexpr int most_digits = 9;
    const bool negative = *at_ == '-';
    const char* const first = negative ? at_ + 1 : at_;
    const char* digit = first;
    bx_long value = 0;
    for (; *digit >= '0' && *digit <= '9'; ++digit) {
      if (digit == first + most_digits) return false;
      value = value * 10 + (*digit - '0');
    }
    if (digit == first) return false;
    number = negative ? -value : value;
    at_ = digit;
    return true;
  }

 private:
  const char* at_;
};
