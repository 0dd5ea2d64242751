// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bx_wire.h"

/// The layout that instances of one name share: their wires, relative to the lower left corner. Made by
/// BX_INSTANCE::create_template or read from a compressed file, and owned by the database.
class BX_API ASS_TEMPLATE {
 public:
  // ---- fields, in this order
  char* name = nullptr;         ///< of the instances; borrowed from the database
  unsigned short numwires = 0;  ///< the wires below
  BX_WIRE* wires = nullptr;     ///< owned, from new[]; nodes are relative, names are borrowed

  ASS_TEMPLATE() noexcept = default;
  ASS_TEMPLATE(const ASS_TEMPLATE& other) noexcept = default;

  /// Shallow: afterwards the two share the wires, and only one of them may be destroyed. The former wires of
  /// this template are not released. The same holds for a copy.
  ASS_TEMPLATE& operator=(const ASS_TEMPLATE& other) noexcept = default;

  ~ASS_TEMPLATE();

  unsigned short getnumwires() const noexcept { return numwires; }

  /// Wire i, 0 <= i < getnumwires(); not checked.
  BX_WIRE& getwire(int i) const noexcept { return wires[i]; }

  /// Writes the record of a compressed file: the name's address, the number of wires, the wires delta-coded
  /// against the wire coded last (see BX_WIRE::writemeCompressed). Always 1.
  unsigned char writeme(UT_PTRFILE* file) const;

  /// Reads such a record; former wires are released. Names become strings of the file's fix-up table, those of
  /// wires cut there at their first "$". Always 1: what is cut off reads as zeros, and the stream remembers it.
  unsigned char readme(UT_PTRFILE* file);
};
