// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>

#include "bx_instance.h"

/// Walks the subtree below an instance, descendants before their parent, children in the order of their
/// array: for a root with children A (children A1, A2) and B it gives A1, A2, A, B. The root itself is never
/// given, null children are passed over. Trees of any depth; O(1) on average for each instance.
///
/// The tree must not change while it is walked. A copy starts at the same place, but the two share the
/// subtree that the original was in the middle of: what one has taken from it the other does not see again.
/// A walk may be abandoned at any time.
class BX_API BX_TILEITERATOR {
 public:
  /// inst is borrowed; null is an instance without children.
  explicit BX_TILEITERATOR(const BX_INSTANCE* inst) noexcept;

  /// Copies, also what would be moved: the other iterator can be used on.
  BX_TILEITERATOR(const BX_TILEITERATOR& other) noexcept;

  BX_TILEITERATOR& operator=(const BX_TILEITERATOR& other) noexcept;
  BX_TILEITERATOR& operator=(BX_TILEITERATOR&& other) noexcept;

  ~BX_TILEITERATOR();

  /// The next instance; null when there is none left, from then on at each call. Throws std::bad_alloc.
  BX_INSTANCE* getnext();

 private:
  class subtree;

  const BX_INSTANCE* root_;
  std::shared_ptr<subtree> child_;  // the rest of the subtree of the current child, while it is walked
  bx_long index_ = 0;               // of the current child
};
