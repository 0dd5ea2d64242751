// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Templates: the layouts that instances share, and the wires of all switch matrices.
#pragma once

#include "bx_ass_template.h"
#include "bx_basic_ass_template.h"
#include "bx_range_map.h"
#include "bx_wire_template.h"
#include "qelmodb.h"

/// The name of every switch-matrix instance.
inline constexpr char BASIC_ASS_NAME[] = "BASIC_ASS";
