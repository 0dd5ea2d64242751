// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The tree of instances once more, written plainly from its definition: the tests hold the library's tree
// against it. Slow, recursive, without wires and databases.
#pragma once

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "exposed.h"

namespace test {

struct plain_node {
  std::string name;
  bx_long xmin;
  bx_long xmax;
  bx_long ymin;
  bx_long ymax;
  std::vector<std::unique_ptr<plain_node>> children;

  plain_node(std::string text, bx_long x1, bx_long y1, bx_long x2, bx_long y2)
      : name(std::move(text)),
        xmin(std::min(x1, x2)),
        xmax(std::max(x1, x2)),
        ymin(std::min(y1, y2)),
        ymax(std::max(y1, y2)) {}

  void add(std::unique_ptr<plain_node> inst) {
    if (inst->xmin == xmin) {
      xmax = std::max(xmax, inst->xmax);
      ymin = std::min(ymin, inst->ymin);
      ymax = std::max(ymax, inst->ymax);
      insert(std::move(inst));
      return;
    }
    for (const auto& child : children) {
      if (child->xmin == inst->xmin) {
        child->add(std::move(inst));
        return;
      }
    }
    auto column = std::make_unique<plain_node>("BXD__" + inst->name, inst->xmin, inst->ymin, inst->xmax, inst->ymax);
    plain_node* filed = column.get();
    insert(std::move(column));
    filed->add(std::move(inst));
  }

  void convert() {
    const std::size_t count = children.size();
    if (count > 40) {
      std::size_t size = 7;
      while (size * size < count) ++size;
      std::vector<std::unique_ptr<plain_node>> groups;
      for (std::size_t i = 0; i < count; ++i) {
        if (i % size == 0) groups.push_back(make_group(groups.size(), *children[i]));
        groups.back()->add(std::move(children[i]));
      }
      children.clear();
      for (auto& group : groups) add(std::move(group));
    }
    for (const auto& child : children) {
      child->convert();
      xmin = std::min(xmin, child->xmin);
      xmax = std::max(xmax, child->xmax);
      ymin = std::min(ymin, child->ymin);
      ymax = std::max(ymax, child->ymax);
    }
  }

 private:
  static bool before(const plain_node& a, const plain_node& b) {
    return a.xmin != b.xmin ? a.xmin < b.xmin : a.ymin <= b.ymin;
  }

  void insert(std::unique_ptr<plain_node> inst) {
    std::size_t lo = 0;
    std::size_t hi = children.size();
    while (lo < hi) {
      const std::size_t mid = (lo + hi) / 2;
      if (before(*inst, *children[mid])) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
    children.insert(children.begin() + static_cast<std::ptrdiff_t>(lo), std::move(inst));
  }

  std::unique_ptr<plain_node> make_group(std::size_t number, const plain_node& first) const {
    char digits[32];
    std::snprintf(digits, sizeof digits, "BXD%04zu_", number);
    return std::make_unique<plain_node>(digits + name, first.xmin, first.ymin, first.xmax, first.ymax);
  }
};

inline std::string line_of(const char* name, bx_long xmin, bx_long xmax, bx_long ymin, bx_long ymax,
                           std::size_t children) {
  return std::string(name) + " " + std::to_string(xmin) + " " + std::to_string(xmax) + " " + std::to_string(ymin) +
         " " + std::to_string(ymax) + " " + std::to_string(children);
}

/// Where the two trees first differ: the path, what the model has there and what the library has; empty
/// when they are the same.
inline std::string difference(const plain_node& model, const BX_INSTANCE& inst) {
  const std::string expected =
      line_of(model.name.c_str(), model.xmin, model.xmax, model.ymin, model.ymax, model.children.size());
  const std::string found =
      line_of(inst.name, inst.xmin, inst.xmax, inst.ymin, inst.ymax, static_cast<std::size_t>(inst.getnuminstances()));
  if (expected != found) return "expected " + expected + ", found " + found;
  for (std::size_t i = 0; i < model.children.size(); ++i) {
    const std::string below = difference(*model.children[i], *inst.instances[static_cast<bx_long>(i)]);
    if (!below.empty()) return model.name + "/" + below;
  }
  return "";
}

/// A tree and its model, grown together.
class modelled_tree {
 public:
  explicit modelled_tree(BX_INSTANCE& root)
      : root_(root), model_(root.name, root.xmin, root.ymin, root.xmax, root.ymax), places_{{&root, &model_}} {}

  std::size_t places() const { return places_.size(); }

  /// Adds an instance below the place, and makes it a place of its own.
  void add(std::size_t place, const std::string& name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
    auto node = std::make_unique<plain_node>(name, x1, y1, x2, y2);
    BX_INSTANCE* inst = make(name.c_str(), x1, y1, x2, y2);
    const auto [parent, model_parent] = places_[place];
    places_.emplace_back(inst, node.get());
    parent->addinstance(inst);
    model_parent->add(std::move(node));
  }

  void convert(std::size_t place) {
    places_[place].first->convert_hierarchy();
    places_[place].second->convert();
  }

  std::string difference() const { return test::difference(model_, root_); }

 private:
  BX_INSTANCE& root_;
  plain_node model_;
  std::vector<std::pair<BX_INSTANCE*, plain_node*>> places_;
};

}  // namespace test
