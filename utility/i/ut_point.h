// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ut_types.h"

/// A point of the coordinate grid, as the utility and device layers pass it.
struct UT_POINT {
  bx_long x = 0;
  bx_long y = 0;

  constexpr UT_POINT() noexcept = default;
  constexpr UT_POINT(bx_long px, bx_long py) noexcept : x(px), y(py) {}
};
