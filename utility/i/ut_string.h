// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Small helpers for C strings and text.
#pragma once

#include <string>

#include "ut_types.h"

/// Duplicates a C string with malloc; the caller frees it with free(). Null gives null. Throws
/// std::bad_alloc when there is no memory.
BX_API char* ut_strdup(const char* text);

/// Formats like printf. The result belongs to the calling thread and stays valid until the eighth
/// further call of neoform on it; copy what must live longer. Throws std::bad_alloc for texts of 512 characters and
/// more when there is no memory.
BX_API char* neoform(const char* format, ...) BX_PRINTF(1, 2);

/// The text itself, or "" for null: what comparisons, reports and writers see of a missing name.
constexpr const char* ut_text(const char* text) noexcept { return text != nullptr ? text : ""; }

/// Reads a decimal number as atoi does (leading white space, one sign, digits; anything else ends
/// it; no digits give 0), but a number beyond 32 bits gives the nearest bound instead of being
/// undefined.
BX_API bx_long ut_atoi(const char* text) noexcept;

/// A text object with substring search.
class BX_API UT_STROBJ {
 public:
  /// Copies the text; null counts as "".
  explicit UT_STROBJ(const char* text) : text_(ut_text(text)) {}

  /// The position, not before start, where what first occurs; -1 when it does not, or when start
  /// is negative. An empty what occurs at start while start is within the text.
  bx_long find(const UT_STROBJ& what, bx_long start) const noexcept;

  const char* getstring() const noexcept { return text_.c_str(); }
  bx_long getlength() const noexcept { return static_cast<bx_long>(text_.size()); }

 private:
  std::string text_;
};
