// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "near_templates.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <string_view>
#include <tuple>

#include "ut_string.h"

namespace bxdb {
namespace {

/// The names of a group's wires, numbered in their order, so that wires are compared as numbers.
class wire_names {
 public:
  void add(const ASS_TEMPLATE& layout) {
    for (int k = 0; k < layout.getnumwires(); ++k) numbers_.emplace(ut_text(layout.getwire(k).name), 0);
  }

  void number() {
    names_.reserve(numbers_.size());
    for (auto& [name, number] : numbers_) {
      number = static_cast<int>(names_.size());
      names_.push_back(name.data());
    }
  }

  int number_of(const BX_WIRE& wire) const { return numbers_.find(ut_text(wire.name))->second; }
  const char* name(int number) const { return names_[static_cast<std::size_t>(number)]; }

 private:
  std::map<std::string_view, int> numbers_;
  std::vector<const char*> names_;  // each ends with a NUL
};

struct numbered_wire {
  int name;
  BX_POINT node;

  std::tuple<int, bx_long, bx_long> key() const noexcept { return {name, node.x, node.y}; }
  friend bool operator<(const numbered_wire& a, const numbered_wire& b) noexcept { return a.key() < b.key(); }
};

using wire_set = std::vector<numbered_wire>;

wire_set wires_of(const ASS_TEMPLATE& layout, const wire_names& names) {
  wire_set wires;
  wires.reserve(layout.getnumwires());
  for (int k = 0; k < layout.getnumwires(); ++k) {
    const BX_WIRE& wire = layout.getwire(k);
    wires.push_back({names.number_of(wire), {wire.nodex, wire.nodey}});
  }
  std::sort(wires.begin(), wires.end());
  return wires;
}

/// Counts the wires that two sets do not share as they are met, name by name.
class difference_counter {
 public:
  void here(int name) noexcept { ++of(name).here; }
  void there(int name) noexcept { ++of(name).there; }

  std::size_t count() const noexcept { return settled_ + std::max(open_.here, open_.there); }

 private:
  struct unshared {
    std::size_t here = 0;
    std::size_t there = 0;
  };

  unshared& of(int name) noexcept {
    if (name != name_) {
      settled_ = count();
      open_ = {};
      name_ = name;
    }
    return open_;
  }

  int name_ = -1;
  unshared open_;  // wires of this name
  std::size_t settled_ = 0;
};

/// How many wires keep the sets apart; beyond most it is not counted to the end.
std::size_t distance(const wire_set& here, const wire_set& there, std::size_t most, std::int64_t& comparisons) {
  difference_counter differences;
  auto a = here.begin();
  auto b = there.begin();
  while ((a != here.end() || b != there.end()) && differences.count() <= most) {
    ++comparisons;
    if (b == there.end() || (a != here.end() && *a < *b)) {
      differences.here((a++)->name);
    } else if (a == here.end() || *b < *a) {
      differences.there((b++)->name);
    } else {
      ++a;
      ++b;
    }
  }
  return differences.count();
}

wire_set only_in(const wire_set& a, const wire_set& b) {
  wire_set only;
  std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(only));
  return only;
}

std::vector<wire_difference> differences_of(const wire_set& here, const wire_set& there, const wire_names& names) {
  const wire_set left = only_in(here, there);
  const wire_set right = only_in(there, here);
  std::vector<wire_difference> differences;
  auto a = left.begin();
  auto b = right.begin();
  while (a != left.end() || b != right.end()) {
    const bool from_left = a != left.end() && (b == right.end() || a->name <= b->name);
    const bool from_right = b != right.end() && (a == left.end() || b->name <= a->name);
    wire_difference& one = differences.emplace_back();
    one.name = names.name(from_left ? a->name : b->name);
    if (from_left) one.here = (a++)->node;
    if (from_right) one.there = (b++)->node;
  }
  return differences;
}

/// Templates of one name.
using name_group = std::vector<const template_use*>;

/// By name, small groups first: where comparisons are limited they go furthest there.
std::vector<name_group> groups_of(const std::vector<template_use>& templates) {
  std::map<std::string_view, name_group> by_name;
  for (const template_use& use : templates) {
    if (use.instances != 0) by_name[ut_text(use.layout->name)].push_back(&use);
  }
  std::vector<name_group> groups;
  for (auto& [name, group] : by_name) {
    if (group.size() > 1) groups.push_back(std::move(group));
  }
  std::stable_sort(groups.begin(), groups.end(),
                   [](const name_group& a, const name_group& b) { return a.size() < b.size(); });
  return groups;
}

/// Those that others could be like come first.
bool comes_first(const template_use& a, const template_use& b) noexcept {
  return std::tuple(-a.instances, a.number) < std::tuple(-b.instances, b.number);
}

class group_search {
 public:
  group_search(name_group group, const near_options& options, std::int64_t& comparisons)
      : group_(std::move(group)), options_(options), comparisons_(comparisons) {
    std::sort(group_.begin(), group_.end(),
              [](const template_use* a, const template_use* b) { return comes_first(*a, *b); });
    for (const template_use* use : group_) names_.add(*use->layout);
    names_.number();
    for (const template_use* use : group_) wires_.push_back(wires_of(*use->layout, names_));
  }

  /// False when the comparisons did not suffice.
  bool add_to(std::vector<near_miss>& found) {
    for (std::size_t i = 1; i < group_.size(); ++i) {
      std::size_t other = 0;
      const bool any = find_nearest(i, other);
      if (comparisons_ >= options_.most_comparisons) return false;
      if (!any) continue;
      found.push_back({group_[i]->number, group_[other]->number, differences_of(wires_[i], wires_[other], names_)});
    }
    return true;
  }

 private:
  bool find_nearest(std::size_t i, std::size_t& nearest) {
    bool any = false;
    std::size_t least = options_.most_wires;
    for (std::size_t other = 0; other < i && comparisons_ < options_.most_comparisons; ++other) {
      ++comparisons_;
      if (!within(least, wires_[i].size(), wires_[other].size())) continue;
      const std::size_t apart = distance(wires_[i], wires_[other], least, comparisons_);
      if (apart > least || (any && apart == least && group_[other]->number > group_[nearest]->number)) continue;
      any = true;
      least = apart;
      nearest = other;
    }
    return any;
  }

  static bool within(std::size_t most, std::size_t a, std::size_t b) noexcept {
    return (a > b ? a - b : b - a) <= most;
  }

  name_group group_;
  const near_options& options_;
  std::int64_t& comparisons_;
  wire_names names_;
  std::vector<wire_set> wires_;
};

}  // namespace

near_templates find_near_templates(const std::vector<template_use>& templates, const near_options& options) {
  near_templates near;
  std::int64_t comparisons = 0;
  for (name_group& group : groups_of(templates)) {
    near.complete = group_search(std::move(group), options, comparisons).add_to(near.found);
    if (!near.complete) break;
  }
  std::sort(near.found.begin(), near.found.end(), [&templates](const near_miss& a, const near_miss& b) {
    return comes_first(templates[static_cast<std::size_t>(a.number)], templates[static_cast<std::size_t>(b.number)]);
  });
  return near;
}

}  // namespace bxdb
