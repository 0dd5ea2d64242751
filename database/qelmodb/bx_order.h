// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The orders that the arrays are kept in.
#pragma once

#include <cstring>

#include "bx_instance.h"
#include "ut_string.h"

/// Byte by byte, as unsigned characters; a missing name counts as "".
inline int bx_compare_names(const char* a, const char* b) noexcept { return std::strcmp(ut_text(a), ut_text(b)); }

/// The order of wires: by name.
inline int bx_compare_wires(const BX_WIRE* a, const BX_WIRE* b) noexcept { return bx_compare_names(a->name, b->name); }

/// The order of the name table.
inline int bx_compare_strings(const char* a, char* const* b) noexcept { return bx_compare_names(a, *b); }

/// The order of children: left edge, then lower edge. Never 0, so that children at one position are all
/// kept; a new one comes before those at its own position. A null child counts as the least.
inline int bx_compare_children(BX_INSTANCE* const* a, BX_INSTANCE* const* b) noexcept {
  const BX_INSTANCE* left = *a;
  const BX_INSTANCE* right = *b;
  if (left == nullptr || right == nullptr) return left != nullptr ? 1 : -1;
  if (left->xmin != right->xmin) return left->xmin < right->xmin ? -1 : 1;
  return left->ymin > right->ymin ? 1 : -1;
}
