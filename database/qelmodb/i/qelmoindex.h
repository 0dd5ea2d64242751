// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// An index over a finished tree: for clients that load a device once and then ask it millions of questions.
//
// Every answer is exactly what a walk over the tree would give, in the order of that walk (bx_walk: parents before
// children, children in their order, null children left out).
//
// Ownership. The index borrows the tree. It is right for as long as nobody changes the tree: no instance, wire, name
// or rectangle in it. Whoever changes something makes a new index.
//
// Concurrency. All questions are const, keep nothing and may be asked by any number of threads at once.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "bx_instance.h"

namespace qelmodb {

/// A wire and the instance that has it.
struct placed_wire {
  BX_WIRE* wire;
  BX_INSTANCE* inst;

  friend bool operator==(const placed_wire& a, const placed_wire& b) noexcept {
    return a.wire == b.wire && a.inst == b.inst;
  }
};

class BX_API tree_index {
 public:
  /// Indexes the subtree of root, root included. One pass over the tree: O(n), less time than the same tree takes
  /// to be loaded from a binary file. Sharing makes it fast: instances with the same wire names, as
  /// string addresses, share one table of them. Throws std::bad_alloc, and std::length_error for more than 4294967294
  /// instances.
  explicit tree_index(const BX_INSTANCE& root);

  tree_index(tree_index&& other) noexcept;
  tree_index& operator=(tree_index&& other) noexcept;
  ~tree_index();

  // ---- the walk

  /// All instances in the order of the walk, root first.
#ifdef __cpp_lib_span  // else ut_types.h has said what is missing
  std::span<BX_INSTANCE* const> instances() const noexcept;
#endif

  static constexpr std::size_t no_number = static_cast<std::size_t>(-1);

  /// The place of inst in that list; no_number for an instance that is not in the index. O(1).
  std::size_t number_of(const BX_INSTANCE& inst) const noexcept;

  /// How many instances lie between root and inst, inst included: 0 for root, and for an instance that is not in the
  /// index. O(1).
  bx_long depth_of(const BX_INSTANCE& inst) const noexcept;

  /// The instance that a walk comes to behind inst; null behind the last one, and for an instance that is not in the
  /// index. O(1).
  BX_INSTANCE* next(const BX_INSTANCE& inst) const noexcept;

  /// The same when the walk passes over what is below inst. O(1).
  BX_INSTANCE* next_past(const BX_INSTANCE& inst) const noexcept;

  /// The instance of which inst is a child; null for root, and for an instance that is not in the index. O(1).
  BX_INSTANCE* parent(const BX_INSTANCE& inst) const noexcept;

  /// The names from root down to inst, joined by "/"; empty for an instance that is not in the index. O(depth).
  std::string path(const BX_INSTANCE& inst) const;

  // ---- by name; null counts as ""

  /// All instances of this name. The list lies in the index. O(1).
#ifdef __cpp_lib_span  // else ut_types.h has said what is missing
  std::span<BX_INSTANCE* const> instances_named(const char* name) const noexcept;
#endif

  /// The first wire of this name that stands behind wire after in the instance's list; of all its wires when after is
  /// null. Null when there is none, when inst is not in the index, or after not a wire of inst. Wires need not be in
  /// order. O(1) for instances that share their names with others, else O(log n); where wires are out of order,
  /// looking behind a wire is O(n).
  BX_WIRE* wire(const BX_INSTANCE& inst, const char* name, const BX_WIRE* after = nullptr) const noexcept;

  // ---- by place. Each replaces what found held; a vector that is used again needs no allocation. Throw
  //      std::bad_alloc.

  /// All instances, of all levels, whose rectangle covers (x, y), edges included, whether or not their parents cover
  /// it.
  void instances_at(bx_long x, bx_long y, std::vector<BX_INSTANCE*>& found) const;

  /// All instances, of all levels, whose rectangle has a point in common with the one spanned by two opposite corners,
  /// given in any order; edges included.
  void instances_meeting(bx_long x1, bx_long y1, bx_long x2, bx_long y2, std::vector<BX_INSTANCE*>& found) const;

  /// All wires whose node is (x, y), of all instances: by instance in the order of the walk, then in the order of its
  /// list. The cost is that of the answer and of a look at the instances with wires close by.
  void wires_at(bx_long x, bx_long y, std::vector<placed_wire>& found) const;

  // ---- measure

  /// Bytes that the index holds, about 100 for each instance and 5 for each wire where instances share their names and
  /// the wires of an instance lie close together in the order of their names.
  std::size_t memory() const noexcept;

 private:
  class content;
  std::unique_ptr<const content> content_;
};

}  // namespace qelmodb
