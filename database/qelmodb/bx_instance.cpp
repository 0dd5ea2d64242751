// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_instance.h"

#include <algorithm>
#include <memory>
#include <string>

#include "bx_access.h"
#include "bx_order.h"

char BX_INSTANCE::separator = '\0';

BX_INSTANCE::BX_INSTANCE(const char* instance_name, bx_long x1, bx_long y1, bx_long x2, bx_long y2)
    : nameborrowed(false),
      name(ut_strdup(instance_name)),
      wires(16),
      instances(4),
      top(nullptr),
      tmplt(0),
      children_in_order_(true) {
  xmin = std::min(x1, x2);
  xmax = std::max(x1, x2);
  ymin = std::min(y1, y2);
  ymax = std::max(y1, y2);
}

// Copying the arrays reports the fault and ends the process. Where a substitute manager returns, the copy
// is left without a name and without a database, so that it can be destroyed.
BX_INSTANCE::BX_INSTANCE(const BX_INSTANCE& other)
    : BX_EXTREMA(other),
      nameborrowed(other.nameborrowed),
      name(other.name),
      wires(other.wires),
      instances(other.instances),
      top(nullptr),
      tmplt(other.tmplt),
      children_in_order_(true) {
  name = nullptr;
}

void BX_INSTANCE::addwire(const BX_WIRE* w) {
  BX_WIRE added(nullptr, w->nodex, w->nodey);
  if (top != nullptr) {
    added.name = top->getcachedname(w->name);
    added.nameborrowed = true;  // while it is in our hands
  } else {
    added.name = ut_strdup(w->name);
  }
  const bx_long at = wires.a_sortadd(&added, bx_compare_wires);
  wires[at].nameborrowed = false;
  added.name = nullptr;
}

// The first child with this left edge. The binary search gives the same answer as a walk wherever the
// children are known to be in order; there, no child is null.
BX_INSTANCE* BX_INSTANCE::find_column(bx_long x, bool& met_null) const noexcept {
  met_null = false;
  if (children_in_order_) {
    BX_INSTANCE** const column =
        std::lower_bound(instances.begin(), instances.end(), x,
                         [](const BX_INSTANCE* child, bx_long edge) { return child->xmin < edge; });
    return column != instances.end() && (*column)->xmin == x ? *column : nullptr;
  }
  for (BX_INSTANCE* child : instances) {
    met_null = child == nullptr;
    if (met_null) return nullptr;
    if (child->xmin == x) return child;
  }
  return nullptr;
}

void BX_INSTANCE::addinstance(BX_INSTANCE* inst) {
  if (inst->xmin == xmin) {
    attach(inst);
    return;
  }
  bool met_null = false;
  BX_INSTANCE* column = find_column(inst->xmin, met_null);
  if (met_null) {
    attach(inst);
    return;
  }
  if (column == nullptr) {
    const std::string column_name = std::string("BXD__") + ut_text(inst->name);
    auto fresh = std::make_unique<BX_INSTANCE>(nullptr, inst->xmin, inst->ymin, inst->xmax, inst->ymax);
    fresh->name = top != nullptr ? top->getcachedname(column_name.c_str()) : ut_strdup(column_name.c_str());
    fresh->top = top;
    column = fresh.get();
    instances.a_sortadd(&column, bx_compare_children);
    fresh.release();
  }
  column->attach(inst);
}

void BX_INSTANCE::attach(BX_INSTANCE* inst) {
  instances.a_sortadd(&inst, bx_compare_children);
  xmax = std::max(xmax, inst->xmax);
  ymin = std::min(ymin, inst->ymin);
  ymax = std::max(ymax, inst->ymax);
  // Compared with the lower edge, not the left one: clients know and rely on it.
  if (xmin > inst->ymin) xmin = inst->xmin;
  inst->settoplevel(top);
}

void BX_INSTANCE::note_child_order() noexcept {
  children_in_order_ = true;
  const BX_INSTANCE* before = nullptr;
  for (const BX_INSTANCE* child : instances) {
    if (child == nullptr || (before != nullptr && before->xmin > child->xmin)) {
      children_in_order_ = false;
      return;
    }
    before = child;
  }
}
