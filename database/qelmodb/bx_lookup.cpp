// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Lookups by name and by position. Nothing here changes the tree or keeps anything, so any number of
// threads may look things up in a tree at rest.
#include <array>
#include <cstring>
#include <vector>

#include "bx_fetch.h"
#include "bx_instance.h"
#include "bx_internal_error.h"
#include "bx_order.h"
#include "ut_string.h"

namespace {

struct by_whole_name {
  static int compare(const char* a, const char* b) noexcept { return bx_compare_names(a, b); }
};

// By what stands before the first "$", in place: a stem ends at "$" as at the NUL.
struct by_stem {
  static int compare(const char* a, const char* b) noexcept;
};

int by_stem::compare(const char* a, const char* b) noexcept {
  const auto* left = reinterpret_cast<const unsigned char*>(ut_text(a));
  const auto* right = reinterpret_cast<const unsigned char*>(ut_text(b));
  const auto at = [](const unsigned char* c) noexcept -> int { return *c == '$' ? 0 : *c; };
  while (at(left) != 0 && at(left) == at(right)) {
    ++left;
    ++right;
  }
  return at(left) - at(right);
}

const char* name_of(const BX_WIRE& wire) noexcept { return wire.name; }
const char* name_of(const BX_INSTANCE* child) noexcept { return child != nullptr ? child->name : nullptr; }

// Of the wires of an instance, of which few are in the cache, asks for those that a search by halving will look at
// first and, once the rest is short, for all of it: the search then waits for memory twice, not at each step.
class fetched_ahead {
 public:
  explicit fetched_ahead(const DARRAY_BX_WIRE& wires) noexcept : wires_(wires) {
    const bx_long count = wires.getcount();
    for (bx_long eighth = 1; count > few && eighth < 8; ++eighth) {
      bx_fetch(&wires[static_cast<bx_long>(std::int64_t{count} * eighth / 8)]);
    }
  }

  void rest(bx_long lo, bx_long hi) noexcept {
    if (done_ || hi - lo > few) return;
    done_ = true;
    bx_fetch_wires(&wires_[lo], hi - lo + 1);
  }

 private:
  static constexpr bx_long few = 16;

  const DARRAY_BX_WIRE& wires_;
  bool done_ = false;
};

template <class Order>
bx_long first_of(const DARRAY_BX_WIRE& wires, const char* name) noexcept {
  fetched_ahead fetched(wires);
  return wires.a_bsearch(
      name, [](const char* key, const BX_WIRE& wire) noexcept { return Order::compare(key, name_of(wire)); },
      [&fetched](bx_long lo, bx_long hi) noexcept { fetched.rest(lo, hi); });
}

template <class Order>
bx_long first_of(const DARRAY_BX_INSTPTR& children, const char* name) noexcept {
  return children.a_bsearch(
      name, [](const char* key, BX_INSTANCE* const& child) noexcept { return Order::compare(key, name_of(child)); });
}

// The search by name in a wire or child array. Behind a start the first element that the name does not
// sort before decides: in a sorted array that is the next of the same name, or none.
template <class Order, class Element>
bx_long id_of(const UT_DARRAY<Element>& elements, const char* name, bx_long start) noexcept {
  if (start < 0) return first_of<Order>(elements, name);
  const bx_long count = elements.getcount();
  if (start >= count - 1) return -1;
  bx_long i = start + 1;
  while (i < count && Order::compare(name, name_of(elements[i])) < 0) ++i;
  return i < count && Order::compare(name, name_of(elements[i])) == 0 ? i : -1;
}

template <class Order>
BX_WIRE* wire_behind(const BX_INSTANCE& inst, const char* name, BX_WIRE* start) noexcept {
  bx_long from = -1;
  if (start != nullptr) {
    from = inst.wires.intgetindex(start);
    if (from < 0) return nullptr;
  }
  return inst.getwire(id_of<Order>(inst.wires, name, from));
}

bool covers(const BX_INSTANCE& inst, bx_long x, bx_long y) noexcept {
  return inst.xmin <= x && x <= inst.xmax && inst.ymin <= y && y <= inst.ymax;
}

// The next child from index on whose rectangle covers (x, y). Children are ordered by left edge, so none
// behind one that starts beyond x + 1 can; the slack of one column is part of the contract.
bx_long next_covering(const BX_INSTANCE& inst, bx_long from, bx_long x, bx_long y) noexcept {
  const std::int64_t last_edge = std::int64_t{x} + 1;
  for (bx_long i = from; i < inst.instances.getcount(); ++i) {
    const BX_INSTANCE* child = inst.instances[i];
    if (child == nullptr) continue;
    if (child->xmin > last_edge) return -1;
    if (covers(*child, x, y)) return i;
  }
  return -1;
}

// A stack of which the first part lies on the caller's stack, so that trees of usual depth are searched
// without an allocation and trees of any depth without overflowing it.
class search_path {
 public:
  struct place {
    const BX_INSTANCE* inst;
    bx_long next;
  };

  bool empty() const noexcept { return depth_ == 0; }
  place& back() noexcept { return depth_ <= near_.size() ? near_[depth_ - 1] : far_.back(); }
  void push(const BX_INSTANCE* inst) {
    if (depth_ < near_.size()) {
      near_[depth_] = {inst, 0};
    } else {
      far_.push_back({inst, 0});
    }
    ++depth_;
  }
  void pop() noexcept {
    if (depth_ > near_.size()) far_.pop_back();
    --depth_;
  }

 private:
  std::array<place, 256> near_;
  std::vector<place> far_;
  std::size_t depth_ = 0;
};

template <class Order>
BX_WIRE* wire_at(const BX_INSTANCE& root, bx_long x, bx_long y, const char* name) {
  search_path path;
  const BX_INSTANCE* entered = &root;
  for (;;) {
    if (entered != nullptr) {
      const bx_long id = id_of<Order>(entered->wires, name, -1);
      if (id >= 0) return &entered->wires[id];
      path.push(entered);
    }
    search_path::place& here = path.back();
    const bx_long covering = next_covering(*here.inst, here.next, x, y);
    entered = nullptr;
    if (covering >= 0) {
      here.next = covering + 1;
      entered = here.inst->instances[covering];
    } else {
      path.pop();
      if (path.empty()) return nullptr;
    }
  }
}

// The index of a start instance among the children, -1 for null. One that is no child ends the process;
// where that returns, -2 makes the caller find nothing.
bx_long start_index(const BX_INSTANCE& parent, const BX_INSTANCE* start, bx_long code) {
  if (start == nullptr) return -1;
  for (bx_long i = 0; i < parent.instances.getcount(); ++i) {
    if (parent.instances[i] == start) return i;
  }
  bx_internal_error("BX_INSTANCE::getinstance Couldn't find start instance",
                    {BX_MODULE_TOKEN, "qelmodb", code, __LINE__});
  return -2;
}

}  // namespace

bx_long BX_INSTANCE::getwireid(const char* wire_name, bx_long start) const noexcept {
  return id_of<by_whole_name>(wires, wire_name, start);
}

bx_long BX_INSTANCE::getwireid_tr(const char* wire_name, bx_long start) const noexcept {
  return id_of<by_stem>(wires, wire_name, start);
}

BX_WIRE* BX_INSTANCE::getwire(const char* wire_name, BX_WIRE* start) const noexcept {
  return wire_behind<by_whole_name>(*this, wire_name, start);
}

BX_WIRE* BX_INSTANCE::getwire_tr(const char* wire_name, BX_WIRE* start) const noexcept {
  return wire_behind<by_stem>(*this, wire_name, start);
}

BX_WIRE* BX_INSTANCE::getwire(bx_long x, bx_long y, const char* wire_name) const {
  return wire_at<by_whole_name>(*this, x, y, wire_name);
}

BX_WIRE* BX_INSTANCE::getwire_tr(bx_long x, bx_long y, const char* wire_name) const {
  return wire_at<by_stem>(*this, x, y, wire_name);
}

bx_long BX_INSTANCE::getinstanceid(const char* instance_name, bx_long start) const noexcept {
  return id_of<by_whole_name>(instances, instance_name, start);
}

BX_INSTANCE* BX_INSTANCE::getinstance(const char* instance_name, BX_INSTANCE* start) const {
  const bx_long from = start_index(*this, start, 1);
  return from >= -1 ? getinstance(getinstanceid(instance_name, from)) : nullptr;
}

bx_long BX_INSTANCE::getinstanceid(bx_long x, bx_long y, bx_long start) const noexcept {
  for (std::int64_t i = std::int64_t{start < -1 ? -1 : start} + 1; i < instances.getcount(); ++i) {
    const BX_INSTANCE* child = instances[static_cast<bx_long>(i)];
    if (child != nullptr && covers(*child, x, y)) return static_cast<bx_long>(i);
  }
  return -1;
}

BX_INSTANCE* BX_INSTANCE::getinstance(bx_long x, bx_long y, BX_INSTANCE* start) const {
  const bx_long from = start_index(*this, start, 2);
  return from >= -1 ? getinstance(getinstanceid(x, y, from)) : nullptr;
}
