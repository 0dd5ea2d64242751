// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <limits>
#include <map>

#include "bx_wire.h"

/// No such column, row or wire list.
inline constexpr std::uint16_t NO_INDEX = 65535;

/// No position.
inline constexpr BX_POINT NO_POINT{std::numeric_limits<bx_long>::max(), std::numeric_limits<bx_long>::max()};

/// A sequence of values in which runs of equal values are stored once. There are two: of unsigned 16-bit
/// numbers and of points (which differ when either coordinate does).
template <class T>
class RANGE_MAP {
 public:
  /// One entry for each run: the index at which it starts, and its value. The first starts at 0.
  std::map<std::uint16_t, T> ranges;

  /// The indices 0 to size - 1 have a value.
  std::uint16_t size = 0;

  /// Takes the runs of n values. Meant for a new map: entries that it has already stay as they are. An n of
  /// 0 is an impossible state, which ends the process through the message manager.
  void initiate(const T* values, std::uint16_t n);

  /// The value of index i: that of the entry with the greatest start not above i. An index that has none is
  /// an impossible state, which ends the process through the message manager. O(log n).
  T& lookup(std::uint16_t i);
  const T& lookup(std::uint16_t i) const;
};

extern template class BX_API RANGE_MAP<std::uint16_t>;
extern template class BX_API RANGE_MAP<BX_POINT>;
