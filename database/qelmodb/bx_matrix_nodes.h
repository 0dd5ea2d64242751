// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// From the node of a switch-matrix wire to what its template stores, and back. Sums and differences wrap around.
#pragma once

#include "bx_wire_template.h"
#include "ut_arith.h"

/// What the offsets of a wire template are relative to: the corner of the place, but for the coordinate that a wire
/// keeps whole which runs on through the tiles.
class bx_node_origin {
 public:
  explicit bx_node_origin(const WIRE_TEMPLATE_SM& wire) noexcept
      : by_x_(wire.absolute != 0 && wire.span_dir != 1 ? 0 : ~bx_ulong{0}),
        by_y_(wire.absolute != 0 && wire.span_dir == 1 ? 0 : ~bx_ulong{0}) {}

  BX_POINT offset(BX_POINT corner, BX_POINT node) const noexcept {
    return {ut_wrap_sub(node.x, masked(corner.x, by_x_)), ut_wrap_sub(node.y, masked(corner.y, by_y_))};
  }

  BX_POINT node(BX_POINT corner, BX_POINT offset) const noexcept {
    return {ut_wrap_add(masked(corner.x, by_x_), offset.x), ut_wrap_add(masked(corner.y, by_y_), offset.y)};
  }

 private:
  static bx_long masked(bx_long coordinate, bx_ulong mask) noexcept {
    return static_cast<bx_long>(static_cast<bx_ulong>(coordinate) & mask);
  }

  bx_ulong by_x_;  // all bits, or none
  bx_ulong by_y_;
};
