// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Has memory brought nearer that will be needed soon; it is not waited for. Compilers that cannot do without it.
#pragma once

#include "bx_wire.h"

inline void bx_fetch(const void* memory) noexcept {
#ifdef __GNUC__
  __builtin_prefetch(memory);
#else
  static_cast<void>(memory);
#endif
}

inline void bx_fetch_wires(const BX_WIRE* first, bx_long count) noexcept {
  constexpr bx_long wires_of_line = 64 / sizeof(BX_WIRE);
  for (bx_long i = 0; i < count; i += wires_of_line) bx_fetch(first + i);
}
