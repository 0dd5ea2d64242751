// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_instance.h"

#include <algorithm>
#include <memory>
#include <string>

#include "bx_access.h"
#include "bx_order.h"

char BX_INSTANCE::separator = '\0';

std::atomic<bx_ulong> bx_left_edges_moved{0};

BX_INSTANCE::BX_INSTANCE(const char* instance_name, bx_long x1, bx_long y1, bx_long x2, bx_long y2)
    : nameborrowed(false),
      name(ut_strdup(instance_name)),
      wires(16),
      instances(4),
      top(nullptr),
      tmplt(0),
      in_order_(true),
      in_order_at_(bx_left_edges_moved) {
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
      in_order_(true),
      in_order_at_(bx_left_edges_moved) {
  name = nullptr;
}

// Former names stay with the instance that had them.
BX_INSTANCE& BX_INSTANCE::operator=(const BX_INSTANCE& other) noexcept {
  if (xmin != other.xmin) ++bx_left_edges_moved;
  BX_EXTREMA::operator=(other);
  nameborrowed = other.nameborrowed;
  name = other.name;
  wires = other.wires;
  instances = other.instances;
  top = other.top;
  tmplt = other.tmplt;
  in_order_ = other.in_order_;
  in_order_at_ = other.in_order_at_;
  return *this;
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

namespace {

// Up to here walking costs no more than halving saves, and it is right also where a client has moved children by hand.
constexpr bx_long longest_walk = 256;

// The index of the first child, in a list that is in order, that does not start left of x.
bx_long first_not_left_of(const DARRAY_BX_INSTPTR& children, bx_long x) noexcept {
  BX_INSTANCE* const* const found = std::lower_bound(
      children.begin(), children.end(), x, [](const BX_INSTANCE* child, bx_long edge) { return child->xmin < edge; });
  return static_cast<bx_long>(found - children.begin());
}

// Clients take children out by hand, so the list is looked through each time. That takes a fifth of a microsecond for a
// thousand children, as none is touched.
bool has_null(const DARRAY_BX_INSTPTR& children) noexcept {
  return std::find(children.begin(), children.end(), nullptr) != children.end();
}

}  // namespace

// The first child with this left edge; met_null is set when the search came upon a null child first.
BX_INSTANCE* BX_INSTANCE::find_column(bx_long x, bool& met_null) noexcept {
  const bx_long count = instances.getcount();
  const bool ordered = count > longest_walk && !has_null(instances) && children_in_order();
  met_null = false;
  for (bx_long i = ordered ? first_not_left_of(instances, x) : 0; i < count; ++i) {
    BX_INSTANCE* child = instances[i];
    met_null = child == nullptr;
    if (met_null) return nullptr;
    if (child->xmin == x) return child;
    if (ordered) return nullptr;
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
    instances.a_makeroom();
    fresh->attach(inst);
    column = fresh.release();
    instances.a_sortadd(&column, bx_compare_children);
    return;
  }
  column->attach(inst);
}

void BX_INSTANCE::attach(BX_INSTANCE* inst) {
  instances.a_makeroom();
  inst->settoplevel(top);
  instances.a_sortadd(&inst, bx_compare_children);
  xmax = std::max(xmax, inst->xmax);
  ymin = std::min(ymin, inst->ymin);
  ymax = std::max(ymax, inst->ymax);
  // Compared with the lower edge, not the left one: clients know and rely on it.
  if (xmin > inst->ymin && xmin != inst->xmin) {
    xmin = inst->xmin;
    ++bx_left_edges_moved;
  }
}

void BX_INSTANCE::note_child_order() noexcept {
  in_order_at_ = bx_left_edges_moved;
  in_order_ = std::find(instances.begin(), instances.end(), nullptr) == instances.end() &&
              std::is_sorted(instances.begin(), instances.end(),
                             [](const BX_INSTANCE* a, const BX_INSTANCE* b) { return a->xmin < b->xmin; });
}

bool BX_INSTANCE::children_in_order() noexcept {
  if (in_order_at_ != bx_left_edges_moved) note_child_order();
  return in_order_;
}
