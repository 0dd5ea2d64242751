// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "tree_diff.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <tuple>

#include "bx_walk.h"
#include "text.h"
#include "ut_string.h"

namespace bxdb {
namespace {

using place = std::array<bx_long, 4>;

place place_of(const BX_INSTANCE& inst) noexcept { return {inst.xmin, inst.ymin, inst.xmax, inst.ymax}; }
place place_of(const BX_WIRE& wire) noexcept { return {wire.nodex, wire.nodey, 0, 0}; }

template <class Item>
bool equal_items(const Item& a, const Item& b) noexcept {
  return place_of(a) == place_of(b) && std::strcmp(ut_text(a.name), ut_text(b.name)) == 0;
}

/// A child or a wire among its siblings.
template <class Item>
struct sibling {
  std::string_view name;
  place where;
  std::size_t index;
  const Item* item;
};

template <class Item>
using siblings = std::vector<sibling<Item>>;

/// Which siblings of two instances belong together.
template <class Item>
struct matches {
  std::vector<std::pair<const Item*, const Item*>> pairs;  // at the same place or not
  std::vector<const Item*> only_a;
  std::vector<const Item*> only_b;
};

template <class Item>
siblings<Item> sorted(const std::vector<const Item*>& items) {
  siblings<Item> list;
  list.reserve(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    list.push_back({ut_text(items[i]->name), place_of(*items[i]), i, items[i]});
  }
  std::sort(list.begin(), list.end(), [](const sibling<Item>& left, const sibling<Item>& right) {
    return std::tie(left.name, left.where, left.index) < std::tie(right.name, right.where, right.index);
  });
  return list;
}

template <class Item>
class matcher {
 public:
  using position = typename siblings<Item>::const_iterator;

  matches<Item> match(const siblings<Item>& a, const siblings<Item>& b) {
    position at_a = a.begin();
    position at_b = b.begin();
    while (at_a != a.end() || at_b != b.end()) {
      const bool a_first = at_b == b.end() || (at_a != a.end() && at_a->name <= at_b->name);
      const std::string_view name = a_first ? at_a->name : at_b->name;
      const position end_a = end_of_name(at_a, a.end(), name);
      const position end_b = end_of_name(at_b, b.end(), name);
      match_name(at_a, end_a, at_b, end_b);
      at_a = end_a;
      at_b = end_b;
    }
    return std::move(found_);
  }

 private:
  static position end_of_name(position from, position end, std::string_view name) {
    return std::find_if(from, end, [name](const sibling<Item>& one) { return one.name != name; });
  }

  void match_name(position a, position end_a, position b, position end_b) {
    left_a_.clear();
    left_b_.clear();
    while (a != end_a && b != end_b) {
      if (a->where == b->where) {
        found_.pairs.emplace_back((a++)->item, (b++)->item);
      } else if (a->where < b->where) {
        left_a_.push_back(&*a++);
      } else {
        left_b_.push_back(&*b++);
      }
    }
    for (; a != end_a; ++a) left_a_.push_back(&*a);
    for (; b != end_b; ++b) left_b_.push_back(&*b);
    match_left_over();
  }

  void match_left_over() {
    const auto by_index = [](const sibling<Item>* left, const sibling<Item>* right) {
      return left->index < right->index;
    };
    std::sort(left_a_.begin(), left_a_.end(), by_index);
    std::sort(left_b_.begin(), left_b_.end(), by_index);
    const std::size_t both = std::min(left_a_.size(), left_b_.size());
    for (std::size_t i = 0; i < both; ++i) found_.pairs.emplace_back(left_a_[i]->item, left_b_[i]->item);
    for (std::size_t i = both; i < left_a_.size(); ++i) found_.only_a.push_back(left_a_[i]->item);
    for (std::size_t i = both; i < left_b_.size(); ++i) found_.only_b.push_back(left_b_[i]->item);
  }

  matches<Item> found_;
  std::vector<const sibling<Item>*> left_a_;
  std::vector<const sibling<Item>*> left_b_;
};

template <class Item>
matches<Item> match(const std::vector<const Item*>& a, const std::vector<const Item*>& b) {
  return matcher<Item>().match(sorted(a), sorted(b));
}

std::vector<const BX_WIRE*> wires_of(const BX_INSTANCE& inst) {
  std::vector<const BX_WIRE*> wires;
  wires.reserve(static_cast<std::size_t>(inst.getnumwires()));
  for (const BX_WIRE& wire : inst.wires) wires.push_back(&wire);
  return wires;
}

std::vector<const BX_INSTANCE*> children_of(const BX_INSTANCE& inst) {
  std::vector<const BX_INSTANCE*> children;
  std::copy_if(inst.instances.begin(), inst.instances.end(), std::back_inserter(children),
               [](const BX_INSTANCE* child) { return child != nullptr; });
  return children;
}

change change_between(const BX_INSTANCE& a, const BX_INSTANCE& b) noexcept {
  const auto span = [](bx_long from, bx_long to) { return std::int64_t{to} - std::int64_t{from}; };
  const bool same_size = span(a.xmin, a.xmax) == span(b.xmin, b.xmax) && span(a.ymin, a.ymax) == span(b.ymin, b.ymax);
  return same_size ? change::moved : change::resized;
}

class tree_differ {
 public:
  tree_differ(bool with_wires, const std::function<void(const difference&)>& report)
      : with_wires_(with_wires), report_(report) {}

  diff_counts run(const BX_INSTANCE& a, const BX_INSTANCE& b) {
    enter(a, b, 0);
    while (!levels_.empty()) {
      level& here = levels_.back();
      if (here.next == here.pairs.size()) {
        levels_.pop_back();
        continue;
      }
      const auto [child_a, child_b] = here.pairs[here.next++];
      enter(*child_a, *child_b, levels_.size());
    }
    return counts_;
  }

 private:
  using instance_pairs = std::vector<std::pair<const BX_INSTANCE*, const BX_INSTANCE*>>;

  struct level {
    instance_pairs pairs;
    std::size_t next;
  };

  void enter(const BX_INSTANCE& a, const BX_INSTANCE& b, std::size_t depth) {
    path_.enter(a, static_cast<bx_long>(depth));
    compare_instances(a, b);
    if (with_wires_) compare_wires(a, b);
    instance_pairs pairs = compare_children(a, b, static_cast<bx_long>(depth));
    if (!pairs.empty()) levels_.push_back({std::move(pairs), 0});
  }

  void compare_instances(const BX_INSTANCE& a, const BX_INSTANCE& b) {
    if (std::strcmp(ut_text(a.name), ut_text(b.name)) != 0) {
      ++counts_.instances.renamed;
      report_({change::renamed, path_.text(), &a, &b});
    }
    if (place_of(a) == place_of(b)) return;
    const change what = change_between(a, b);
    ++(what == change::moved ? counts_.instances.moved : counts_.instances.resized);
    report_({what, path_.text(), &a, &b});
  }

  void compare_wires(const BX_INSTANCE& a, const BX_INSTANCE& b) {
    if (std::equal(a.wires.begin(), a.wires.end(), b.wires.begin(), b.wires.end(), equal_items<BX_WIRE>)) return;
    const matches<BX_WIRE> found = match(wires_of(a), wires_of(b));
    counts_.wires.removed += static_cast<std::int64_t>(found.only_a.size());
    counts_.wires.added += static_cast<std::int64_t>(found.only_b.size());
    for (const BX_WIRE* wire : found.only_a) report_wire(change::removed, wire, nullptr);
    for (const BX_WIRE* wire : found.only_b) report_wire(change::added, nullptr, wire);
    for (const auto& [old_wire, new_wire] : found.pairs) {
      if (place_of(*old_wire) == place_of(*new_wire)) continue;
      ++counts_.wires.moved;
      report_wire(change::moved, old_wire, new_wire);
    }
  }

  void report_wire(change what, const BX_WIRE* a, const BX_WIRE* b) {
    const std::string name = ut_text((a != nullptr ? a : b)->name);
    report_({what, path_.text() + "/" + name, nullptr, nullptr, a, b});
  }

  /// Reports what only one of them has; returns the children to be compared.
  instance_pairs compare_children(const BX_INSTANCE& a, const BX_INSTANCE& b, bx_long depth) {
    const std::vector<const BX_INSTANCE*> of_a = children_of(a);
    const std::vector<const BX_INSTANCE*> of_b = children_of(b);
    const auto equal = [](const BX_INSTANCE* left, const BX_INSTANCE* right) { return equal_items(*left, *right); };
    instance_pairs pairs;
    if (std::equal(of_a.begin(), of_a.end(), of_b.begin(), of_b.end(), equal)) {
      for (std::size_t i = 0; i < of_a.size(); ++i) pairs.emplace_back(of_a[i], of_b[i]);
      return pairs;
    }
    matches<BX_INSTANCE> found = match(of_a, of_b);
    for (const BX_INSTANCE* inst : found.only_a) report_subtree(change::removed, *inst, depth + 1);
    for (const BX_INSTANCE* inst : found.only_b) report_subtree(change::added, *inst, depth + 1);
    return std::move(found.pairs);
  }

  void report_subtree(change what, const BX_INSTANCE& top, bx_long depth) {
    path_.enter(top, depth);
    const bool removed = what == change::removed;
    difference one{what, path_.text(), removed ? &top : nullptr, removed ? nullptr : &top};
    bx_walk(top, [&one](const BX_INSTANCE& inst, bx_long) {
      ++one.instances;
      one.wires += inst.getnumwires();
      return true;
    });
    if (!with_wires_) one.wires = 0;
    (removed ? counts_.instances.removed : counts_.instances.added) += one.instances;
    (removed ? counts_.wires.removed : counts_.wires.added) += one.wires;
    report_(one);
  }

  bool with_wires_;
  const std::function<void(const difference&)>& report_;
  path_names path_;
  std::vector<level> levels_;
  diff_counts counts_;
};

}  // namespace

const char* to_string(change what) noexcept {
  switch (what) {
    case change::added:
      return "added";
    case change::removed:
      return "removed";
    case change::moved:
      return "moved";
    case change::resized:
      return "resized";
    case change::renamed:
      break;
  }
  return "renamed";
}

diff_counts diff_trees(const BX_INSTANCE& a, const BX_INSTANCE& b, bool with_wires,
                       const std::function<void(const difference&)>& report) {
  return tree_differ(with_wires, report).run(a, b);
}

}  // namespace bxdb
