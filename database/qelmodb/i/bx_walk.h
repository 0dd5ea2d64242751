// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Walking a tree of any depth without recursion.
#pragma once

#include <vector>

#include "bx_instance.h"

/// How a walk goes on behind an instance: to its children, past them, or not at all.
enum class bx_step { into, past, stop };

/// Calls visit(inst, depth) for instances of the subtree, parents before children, children in their order;
/// the root has depth 0. Null children are skipped. visit says how to go on; false is returned when it
/// stopped the walk. visit must not change the tree, except below an instance that it passes.
template <class Visit>
bool bx_walk_steps(BX_INSTANCE& root, Visit visit) {
  struct place {
    BX_INSTANCE* inst;
    bx_long next;
  };
  const bx_step first = visit(root, bx_long{0});
  if (first != bx_step::into) return first == bx_step::past;
  std::vector<place> path{{&root, 0}};
  while (!path.empty()) {
    place& here = path.back();
    if (here.next >= here.inst->getnuminstances()) {
      path.pop_back();
      continue;
    }
    BX_INSTANCE* child = here.inst->instances[here.next++];
    if (child == nullptr) continue;
    const bx_step step = visit(*child, static_cast<bx_long>(path.size()));
    if (step == bx_step::stop) return false;
    if (step == bx_step::into && child->getnuminstances() != 0) path.push_back({child, 0});
  }
  return true;
}

/// Calls visit(inst, depth) for every instance of the subtree in the same order. Stops as soon as visit gives
/// false, and returns false then. visit must not change the tree.
template <class Visit>
bool bx_walk(BX_INSTANCE& root, Visit visit) {
  return bx_walk_steps(
      root, [&visit](BX_INSTANCE& inst, bx_long depth) { return visit(inst, depth) ? bx_step::into : bx_step::stop; });
}

/// The same over a tree that is only read.
template <class Visit>
bool bx_walk(const BX_INSTANCE& root, Visit visit) {
  return bx_walk(const_cast<BX_INSTANCE&>(root),
                 [&visit](const BX_INSTANCE& inst, bx_long depth) { return visit(inst, depth); });
}
