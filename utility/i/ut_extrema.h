// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ut_types.h"

/// A bounding rectangle, edges included. Whoever stores one keeps it normalised: xmin not above
/// xmax, ymin not above ymax.
struct UT_EXTREMA {
  bx_long xmin = 0;
  bx_long xmax = 0;
  bx_long ymin = 0;
  bx_long ymax = 0;
};
