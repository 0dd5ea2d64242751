// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What differs between two trees.
//
// Children of one instance are matched by their names: first those with the same rectangle, then the
// others in their order, which have been moved (same size) or resized. Wires of one instance likewise: first
// those at the same node, then the others in their order, which have been moved. The roots always match; the
// order among siblings, and among wires, is not compared.
#pragma once

#include <functional>

#include "qelmodb.h"

namespace bxdb {

enum class change { added, removed, moved, resized, renamed };

const char* to_string(change what) noexcept;

/// One difference. a is null for what was added, b for what was removed. An instance that was added or
/// removed stands for all that it holds.
struct difference {
  change what;
  std::string path;
  const BX_INSTANCE* instance_a = nullptr;
  const BX_INSTANCE* instance_b = nullptr;
  const BX_WIRE* wire_a = nullptr;
  const BX_WIRE* wire_b = nullptr;
  std::int64_t instances = 0;  ///< of an instance that was added or removed: in its subtree, itself included
  std::int64_t wires = 0;
};

/// Numbers of differences; what was added or removed is counted with all that it holds.
struct change_counts {
  std::int64_t added = 0;
  std::int64_t removed = 0;
  std::int64_t moved = 0;
  std::int64_t resized = 0;
  std::int64_t renamed = 0;  ///< the root only

  std::int64_t total() const noexcept { return added + removed + moved + resized + renamed; }
};

struct diff_counts {
  change_counts instances;
  change_counts wires;

  bool equal() const noexcept { return instances.total() == 0 && wires.total() == 0; }
};

/// Compares two trees and reports each difference as it is met, parents before children. Takes
/// O(n log n) time and no stack for deep trees.
diff_counts diff_trees(const BX_INSTANCE& a, const BX_INSTANCE& b, bool with_wires,
                       const std::function<void(const difference&)>& report);

}  // namespace bxdb
