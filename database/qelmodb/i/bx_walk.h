// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Walking a tree of any depth without recursion.
#pragma once

#include <vector>

#include "bx_instance.h"

/// Calls visit(inst, depth) for every instance of the subtree, parents before children, children in their
/// order; the root has depth 0. Null children are skipped. Stops as soon as visit gives false, and returns
/// false then. visit must not change the tree.
template <class Visit>
bool bx_walk(BX_INSTANCE& root, Visit visit) {
  struct place {
    BX_INSTANCE* inst;
    bx_long next;
  };
  if (!visit(root, bx_long{0})) return false;
  std::vector<place> path{{&root, 0}};
  while (!path.empty()) {
    place& here = path.back();
    if (here.next >= here.inst->getnuminstances()) {
      path.pop_back();
      continue;
    }
    BX_INSTANCE* child = here.inst->instances[here.next++];
    if (child == nullptr) continue;
    if (!visit(*child, static_cast<bx_long>(path.size()))) return false;
    if (child->getnuminstances() != 0) path.push_back({child, 0});
  }
  return true;
}

/// The same over a tree that is only read.
template <class Visit>
bool bx_walk(const BX_INSTANCE& root, Visit visit) {
  return bx_walk(const_cast<BX_INSTANCE&>(root),
                 [&visit](const BX_INSTANCE& inst, bx_long depth) { return visit(inst, depth); });
}
