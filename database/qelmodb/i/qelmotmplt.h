// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Switch-matrix templates. This version holds the values by which their lookups say "none"; the template
// set itself is not part of it yet.
#pragma once

#include <cstdint>
#include <limits>

#include "qelmodb.h"

/// The name of every switch-matrix instance.
inline constexpr char BASIC_ASS_NAME[] = "BASIC_ASS";

/// No such column, row or wire list.
inline constexpr std::uint16_t NO_INDEX = 65535;

/// No position.
inline constexpr BX_POINT NO_POINT{std::numeric_limits<bx_long>::max(), std::numeric_limits<bx_long>::max()};
