// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// From the node of a switch-matrix wire to what its template stores, and back. Sums and differences wrap around.
#pragma once

#include "bx_wire_template.h"
#include "ut_arith.h"

inline BX_POINT bx_offset_of(const WIRE_TEMPLATE_SM& wire, BX_POINT corner, BX_POINT node) noexcept {
  const bool whole_x = wire.absolute != 0 && wire.span_dir != 1;
  const bool whole_y = wire.absolute != 0 && wire.span_dir == 1;
  return {whole_x ? node.x : ut_wrap_sub(node.x, corner.x), whole_y ? node.y : ut_wrap_sub(node.y, corner.y)};
}

inline BX_POINT bx_node_at(const WIRE_TEMPLATE_SM& wire, BX_POINT corner, BX_POINT offset) noexcept {
  const bool whole_x = wire.absolute != 0 && wire.span_dir != 1;
  const bool whole_y = wire.absolute != 0 && wire.span_dir == 1;
  return {whole_x ? offset.x : ut_wrap_add(corner.x, offset.x), whole_y ? offset.y : ut_wrap_add(corner.y, offset.y)};
}
