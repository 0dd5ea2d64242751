// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bx_range_map.h"

/// Where one wire of the switch matrices lies, for every column and row of their grid.
///
/// The along index is the column and the cross index the row; for span_dir 1 it is the other way round. The
/// offset of the wire's node from the switch matrix at a place is offset_maps[index_map[cross]][along].
class BX_API WIRE_TEMPLATE_SM {
 public:
  // ---- fields, in this order

  char* name = nullptr;  ///< of the wire; borrowed from the database

  /// 0: the wire's node is one of the switch matrix in the next column, too, or the wire continues such a
  /// wire there. 1: the same towards the next row. 2: neither.
  std::uint16_t span_dir = 2;

  /// 1 when the neighbour has the node under the same name. Then the coordinate along the span (y for
  /// span_dir 1, otherwise x) is stored as it is, not relative to the switch matrix.
  std::uint8_t absolute = 0;

  std::uint16_t num_offset_map = 0;            ///< the maps below
  RANGE_MAP<std::uint16_t> index_map;          ///< by cross index: which offset map
  RANGE_MAP<BX_POINT>* offset_maps = nullptr;  ///< owned, from new[]; each by along index

  WIRE_TEMPLATE_SM() = default;

  /// Copies share the offset maps, and only one of them may be destroyed. Assignment does not release the
  /// former offset maps of this template.
  WIRE_TEMPLATE_SM(const WIRE_TEMPLATE_SM& other) = default;
  WIRE_TEMPLATE_SM& operator=(const WIRE_TEMPLATE_SM& other) = default;

  ~WIRE_TEMPLATE_SM();

  char* getname() const noexcept { return name; }

  /// Writes the record of a compressed file. Always 1.
  unsigned char writeme(UT_PTRFILE* file) const;

  /// Reads such a record. Former offset maps are released; runs of the index map that the record does not
  /// mention stay, so read into a new wire template. Always 1: what is cut off reads as zeros, and the stream
  /// remembers it. Offset maps need not be as many as the index map refers to.
  unsigned char readme(UT_PTRFILE* file);
};
