// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What compressing a database is going to do, told before it is done.
//
// The way from a database to a compressed file from which it comes back:
//   1. intern_root_name, when a constructor named the root
//   2. compression_objections: when there are any, compress would end the process
//   3. BX_DB::compress
//   4. find_compression_losses: what a file would not give back, such as names behind a "$"
//   5. BX_DB::dumpcompress
// Nothing here ends the process; memory running out throws std::bad_alloc.
#pragma once

#include "qelmoext.h"

namespace qelmodb {

/// Gives the root the name table's string of its name. A name that the constructor was given lies outside of the
/// table, where compressed files cannot refer to it: loading such a file gives a root without name, and false. The
/// former string stays valid as long as the database.
BX_API void intern_root_name(BX_DB& db);

/// Why BX_DB::compress would end the process: wires of switch matrices that the one with most wires lacks, switch
/// matrices that are hidden behind another at the same place and have wires that no other has, more wires, columns,
/// rows or templates than there are numbers for. Empty when it would not. Takes about as long as compressing. At most
/// most objections are described; the rest is left out.
BX_API std::vector<objection> compression_objections(const BX_DB& db, std::size_t most = 100);

/// How something comes back from a compressed file.
enum class loss {
  cut_instance,  ///< the instance's name is cut at its first "$", because it is the name of a wire as well
  cut_wire,      ///< the wire's name is cut at its first "$"
  renamed_wire,  ///< the wire has the name of the wire in the first instance with the same shape
  moved_wire,    ///< a switch matrix's wire is at the node of another wire of its name, or of another switch matrix
  dropped_wire   ///< the wire is missing, because its instance has more than 65535
};
inline constexpr int loss_count = 5;

/// "wires come back with their names cut at the first "$"" and so on, for what happened to several.
BX_API const char* to_string(loss what) noexcept;

struct compression_loss {
  loss what;
  std::string path;    ///< names from the root down to the instance or wire, joined by "/"
  std::string reason;  ///< such as: comes back as "IN"
};

struct compression_losses {
  std::int64_t counts[loss_count] = {};     ///< by loss
  std::vector<compression_loss> described;  ///< in the order of bx_walk

  std::int64_t count(loss what) const noexcept { return counts[static_cast<int>(what)]; }
  BX_API std::int64_t total() const noexcept;
};

/// What a compressed file of this database, compressed as it stands, would give back otherwise than it is. The root's
/// name must be interned. Exact for trees of class BX_INSTANCE. Of each loss at most most cases are described.
BX_API compression_losses find_compression_losses(const BX_DB& db, std::size_t most = 100);

}  // namespace qelmodb
