// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// 32-bit arithmetic that wraps around instead of being undefined. Coordinates come from files, so
// every sum and difference of coordinates that the library forms goes through these.
#pragma once

#include "ut_types.h"

/// a + b modulo 2^32, as a signed number.
constexpr bx_long ut_wrap_add(bx_long a, bx_long b) noexcept {
  return static_cast<bx_long>(static_cast<bx_ulong>(a) + static_cast<bx_ulong>(b));
}

/// a - b modulo 2^32, as a signed number.
constexpr bx_long ut_wrap_sub(bx_long a, bx_long b) noexcept {
  return static_cast<bx_long>(static_cast<bx_ulong>(a) - static_cast<bx_ulong>(b));
}
