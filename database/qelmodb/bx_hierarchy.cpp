// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Breaking up long child lists.
#include <algorithm>
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

// Moves the children, in their order, into groups, and the groups into this instance.
void BX_INSTANCE::regroup_children(bx_long present) {
  const bx_long size = group_size(present);
  std::vector<BX_INSTANCE*> groups;
  groups.reserve(static_cast<std::size_t>(size));
  BX_INSTANCE* group = nullptr;
  bx_long left_in_group = 0;
  for (BX_INSTANCE*& child : instances) {
    if (child == nullptr) continue;
    if (left_in_group == 0) {
      const std::string text = group_name(static_cast<bx_long>(groups.size()), name);
      auto fresh = std::make_unique<BX_INSTANCE>(nullptr, child->xmin, child->ymin, child->xmax, child->ymax);
      fresh->name = top != nullptr ? top->getcachedname(text.c_str()) : ut_strdup(text.c_str());
      fresh->top = top;
      group = fresh.release();
      groups.push_back(group);
      left_in_group = size;
    }
    group->addinstance(child);
    child = nullptr;
    --left_in_group;
  }
  instances.empty();
  note_child_order();
  for (BX_INSTANCE* made : groups) addinstance(made);
}

void BX_INSTANCE::convert_hierarchy() {
  const bx_long left_edge = xmin;
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
  if (xmin != left_edge) ++bx_left_edges_moved;
}
