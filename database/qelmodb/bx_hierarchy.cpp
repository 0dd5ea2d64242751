// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Breaking up long child lists.
#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "bx_access.h"
#include "ut_string.h"

namespace {

constexpr bx_long most_children = 40;

// The smallest number from 7 whose square is at least the number of children.
bx_long group_size(bx_long children) {
  bx_long size = 7;
  while (std::int64_t{size} * size < children) ++size;
  return size;
}

// The name field holds four digits; a fifth falls behind the underscore and is lost.
std::string group_name(bx_long number, const char* parent) {
  std::string digits = std::to_string(number);
  digits.insert(0, digits.size() < 4 ? 4 - digits.size() : 0, '0');
  return "BXD" + digits.substr(0, 4) + "_" + ut_text(parent);
}

struct visit {
  BX_INSTANCE* inst;
  bx_long next;
};

void widen(BX_INSTANCE& parent, const BX_INSTANCE& child) {
  parent.xmin = std::min(parent.xmin, child.xmin);
  parent.xmax = std::max(parent.xmax, child.xmax);
  parent.ymin = std::min(parent.ymin, child.ymin);
  parent.ymax = std::max(parent.ymax, child.ymax);
}

bx_long present_children(const BX_INSTANCE& inst) {
  return static_cast<bx_long>(std::count_if(inst.instances.begin(), inst.instances.end(),
                                            [](const BX_INSTANCE* child) { return child != nullptr; }));
}

}  // namespace

// The children of an instance on their way into groups, and the groups into the instance. Until all is done the
// instance has its children as before.
class BX_INSTANCE::regrouping {
 public:
  explicit regrouping(BX_INSTANCE& parent) : parent_(parent), changed_(nullptr, 0, 0, 0, 0) {
    static_cast<UT_EXTREMA&>(changed_) = static_cast<const UT_EXTREMA&>(parent);
    changed_.top = parent.top;
    children_.reserve(static_cast<std::size_t>(parent.instances.getcount()));
    std::copy_if(parent.instances.begin(), parent.instances.end(), std::back_inserter(children_),
                 [](const BX_INSTANCE* child) { return child != nullptr; });
    std::sort(children_.begin(), children_.end());
  }
  regrouping(const regrouping&) = delete;
  regrouping& operator=(const regrouping&) = delete;
  ~regrouping() {
    for (const std::unique_ptr<BX_INSTANCE>& group : groups_) {
      if (group != nullptr) let_go(*group);
    }
    let_go(changed_);
  }

  void make_groups(bx_long size) {
    groups_.reserve(static_cast<std::size_t>(size));
    bx_long left_in_group = 0;
    for (BX_INSTANCE* child : parent_.instances) {
      if (child == nullptr) continue;
      if (left_in_group == 0) {
        groups_.push_back(group_for(*child));
        left_in_group = size;
      }
      groups_.back()->addinstance(child);
      --left_in_group;
    }
    for (std::unique_ptr<BX_INSTANCE>& group : groups_) {
      changed_.addinstance(group.get());
      static_cast<void>(group.release());
    }
  }

  void commit() noexcept {
    parent_.instances.a_swap(changed_.instances);
    static_cast<UT_EXTREMA&>(parent_) = static_cast<const UT_EXTREMA&>(changed_);
    parent_.note_child_order();
  }

 private:
  std::unique_ptr<BX_INSTANCE> group_for(const BX_INSTANCE& first) const {
    BX_DB* const db = parent_.top;
    const std::string text = group_name(static_cast<bx_long>(groups_.size()), parent_.name);
    auto fresh = std::make_unique<BX_INSTANCE>(nullptr, first.xmin, first.ymin, first.xmax, first.ymax);
    fresh->name = db != nullptr ? db->getcachedname(text.c_str()) : ut_strdup(text.c_str());
    fresh->top = db;
    return fresh;
  }

  // Takes the children out of what was made for them. Below an instance there are a group, and columns made by adding.
  void let_go(BX_INSTANCE& made) noexcept {
    for (BX_INSTANCE* below : made.instances) {
      if (below == nullptr || std::binary_search(children_.begin(), children_.end(), below)) continue;
      let_go(*below);
      delete below;
    }
    made.instances.empty();
  }

  BX_INSTANCE& parent_;
  std::vector<BX_INSTANCE*> children_;  // by address
  std::vector<std::unique_ptr<BX_INSTANCE>> groups_;
  BX_INSTANCE changed_;  // what the parent will be: its rectangle and children
};

void BX_INSTANCE::regroup_children(bx_long present) {
  regrouping groups(*this);
  groups.make_groups(group_size(present));
  groups.commit();
}

void BX_INSTANCE::convert_hierarchy() {
  // Where the work ends early, the order of any list may be another than it was known to be.
  bx_left_edge_watch edges(*this);
  edges.edges_below_may_move(true);
  std::vector<visit> path;
  auto enter = [&path](BX_INSTANCE* inst) {
    const bx_long present = present_children(*inst);
    if (present > most_children) inst->regroup_children(present);
    path.push_back({inst, 0});
  };
  enter(this);
  while (!path.empty()) {
    BX_INSTANCE* inst = path.back().inst;
    const bx_long next = path.back().next++;
    if (next < inst->instances.getcount()) {
      if (inst->instances[next] != nullptr) enter(inst->instances[next]);
      continue;
    }
    // All children are converted. Their rectangles may have grown to the left, past their neighbours.
    inst->note_child_order();
    path.pop_back();
    if (!path.empty()) widen(*path.back().inst, *inst);
  }
  edges.edges_below_may_move(false);
}
