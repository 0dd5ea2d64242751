// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <stdexcept>

#include "bx_box_pyramid.h"
#include "bx_instance_numbers.h"
#include "bx_named_instances.h"
#include "bx_node_runs.h"
#include "bx_walk.h"
#include "bx_wire_lists.h"
#include "qelmoindex.h"
#include "ut_slab_vector.h"
#include "ut_string.h"

namespace qelmodb {

namespace {

/// How many instances a tree has if all children of its root are like some of them, but not many times those that were
/// seen: a first child may be much larger than the others. Counting would take a walk, and room that is not used costs
/// only addresses.
std::size_t probable_count(const BX_INSTANCE& root) {
  constexpr bx_long looked_at = 16;
  constexpr std::size_t most_counted = 100000;
  const bx_long children = root.getnuminstances();
  std::size_t counted = 1;
  bx_long seen = 0;
  for (bx_long i = 0; i < children && counted < most_counted; i += children / looked_at + 1, ++seen) {
    if (root.instances[i] == nullptr) continue;
    bx_walk(*root.instances[i], [&counted](const BX_INSTANCE&, bx_long) { return ++counted < most_counted; });
  }
  const std::size_t all = seen == 0 ? 1 : counted * static_cast<std::size_t>(children) / static_cast<std::size_t>(seen);
  constexpr std::size_t most_for_one_seen = 64;
  return std::min(all + all / 8, most_for_one_seen * counted + 2 * static_cast<std::size_t>(children));
}

/// The instances of a tree in the order of the walk, as numbers from 0.
class walked_tree {
 public:
  /// The slabs are borrowed.
  walked_tree(const BX_INSTANCE& root, UT_SLABS& slabs)
      : instances_(UT_SLAB_ALLOCATOR<BX_INSTANCE*>(slabs)),
        parents_(UT_SLAB_ALLOCATOR<std::uint32_t>(slabs)),
        ends_(UT_SLAB_ALLOCATOR<std::uint32_t>(slabs)),
        depths_(UT_SLAB_ALLOCATOR<bx_long>(slabs)),
        boxes_(reserve(root), slabs),
        named_(instances_.capacity(), slabs) {
    std::vector<std::uint32_t> ancestors;
    bx_walk(const_cast<BX_INSTANCE&>(root), [&](BX_INSTANCE& inst, bx_long depth) {
      if (instances_.size() == UINT32_MAX - 1) throw std::length_error("too many instances for an index");
      const auto number = static_cast<std::uint32_t>(instances_.size());
      leave(ancestors, static_cast<std::size_t>(depth));
      parents_.push_back(ancestors.empty() ? number : ancestors.back());
      ancestors.push_back(number);
      instances_.push_back(&inst);
      ends_.push_back(0);
      depths_.push_back(depth);
      boxes_.add(inst);
      named_.add(inst);
      wires_ += static_cast<std::size_t>(inst.getnumwires());
      return true;
    });
    leave(ancestors, 0);
    boxes_.finish();
    named_.finish(instances_);
  }

  std::span<BX_INSTANCE* const> instances() const noexcept { return instances_; }

  /// That of root is its own.
  std::uint32_t parent(std::uint32_t number) const noexcept { return parents_[number]; }

  /// The number behind the subtree.
  std::uint32_t end(std::uint32_t number) const noexcept { return ends_[number]; }

  bx_long depth(std::uint32_t number) const noexcept { return depths_[number]; }

  std::size_t wires() const noexcept { return wires_; }

  const bx_box_pyramid& boxes() const noexcept { return boxes_; }

  const bx_named_instances& named() const noexcept { return named_; }

  std::size_t memory() const noexcept {
    return instances_.size() * sizeof(BX_INSTANCE*) + (parents_.size() + ends_.size()) * sizeof(std::uint32_t) +
           depths_.size() * sizeof(bx_long) + boxes_.memory() + named_.memory();
  }

 private:
  // Makes room for the instances, and tells for how many.
  std::size_t reserve(const BX_INSTANCE& root) {
    constexpr std::size_t bytes_of_instance = 80;  // here and in the other parts of the index, about
    const std::size_t count = probable_count(root);
    instances_.get_allocator().slabs().expect(count * bytes_of_instance);
    instances_.reserve(count);
    parents_.reserve(count);
    ends_.reserve(count);
    depths_.reserve(count);
    return count;
  }

  void leave(std::vector<std::uint32_t>& ancestors, std::size_t depth) {
    for (; ancestors.size() > depth; ancestors.pop_back()) {
      ends_[ancestors.back()] = static_cast<std::uint32_t>(instances_.size());
    }
  }

  UT_SLAB_VECTOR<BX_INSTANCE*> instances_;
  UT_SLAB_VECTOR<std::uint32_t> parents_;
  UT_SLAB_VECTOR<std::uint32_t> ends_;
  UT_SLAB_VECTOR<bx_long> depths_;
  bx_box_pyramid boxes_;
  bx_named_instances named_;
  std::size_t wires_ = 0;
};

}  // namespace

class tree_index::content {
 public:
  explicit content(const BX_INSTANCE& root)
      : tree(root, slabs), numbers(tree.instances(), slabs), nodes(tree.instances(), tree.wires(), slabs) {
    add_instances();
    wire_lists.finish();
    nodes.finish();
  }

  void add_instances() {
    const std::span<BX_INSTANCE* const> instances = tree.instances();
    constexpr bx_long most_fetched = 128;
    for (std::size_t i = 0; i < instances.size(); ++i) {
      if (i + 1 < instances.size()) {
        const DARRAY_BX_WIRE& next = instances[i + 1]->wires;
        bx_fetch_wires(next.begin(), std::min(next.getcount(), most_fetched));
      }
      const BX_INSTANCE& inst = *instances[i];
      const auto number = static_cast<std::uint32_t>(i);
      numbers.add({&inst, inst.wires.begin(), number, add_wires(inst, number)});
    }
  }

  /// Gives the number of the instance's list of wire names.
  std::uint32_t add_wires(const BX_INSTANCE& inst, std::uint32_t number) {
    const std::uint32_t usual = wire_lists.usual(inst);
    if (usual != bx_name_lists::none && nodes.add_alike(number, usual, wire_lists.names(usual))) {
      wire_lists.add_another(usual);
      return usual;
    }
    const std::uint32_t list = wire_lists.add(inst);
    nodes.add(number, list);
    return list;
  }

  /// The instance of this number; null when there is none.
  BX_INSTANCE* at(std::uint32_t number) const noexcept {
    return number < tree.instances().size() ? tree.instances()[number] : nullptr;
  }

  UT_SLABS slabs;
  walked_tree tree;
  bx_instance_numbers numbers;
  bx_wire_lists wire_lists;
  bx_node_runs nodes;
};

tree_index::tree_index(const BX_INSTANCE& root) : content_(std::make_unique<const content>(root)) {}
tree_index::tree_index(tree_index&& other) noexcept = default;
tree_index& tree_index::operator=(tree_index&& other) noexcept = default;
tree_index::~tree_index() = default;

std::span<BX_INSTANCE* const> tree_index::instances() const noexcept { return content_->tree.instances(); }

std::size_t tree_index::number_of(const BX_INSTANCE& inst) const noexcept {
  const auto& here = content_->numbers.find(inst);
  return here.inst != nullptr ? here.number : no_number;
}

bx_long tree_index::depth_of(const BX_INSTANCE& inst) const noexcept {
  const auto& here = content_->numbers.find(inst);
  return here.inst != nullptr ? content_->tree.depth(here.number) : 0;
}

BX_INSTANCE* tree_index::next(const BX_INSTANCE& inst) const noexcept {
  const auto& here = content_->numbers.find(inst);
  return here.inst != nullptr ? content_->at(here.number + 1) : nullptr;
}

BX_INSTANCE* tree_index::next_past(const BX_INSTANCE& inst) const noexcept {
  const auto& here = content_->numbers.find(inst);
  return here.inst != nullptr ? content_->at(content_->tree.end(here.number)) : nullptr;
}

BX_INSTANCE* tree_index::parent(const BX_INSTANCE& inst) const noexcept {
  const auto& here = content_->numbers.find(inst);
  return here.inst != nullptr && here.number != 0 ? content_->at(content_->tree.parent(here.number)) : nullptr;
}

std::string tree_index::path(const BX_INSTANCE& inst) const {
  std::vector<const char*> names;
  const auto& here = content_->numbers.find(inst);
  if (here.inst == nullptr) return {};
  for (std::uint32_t number = here.number;; number = content_->tree.parent(number)) {
    names.push_back(ut_text(content_->tree.instances()[number]->name));
    if (number == 0) break;
  }
  std::string joined = names.back();
  std::for_each(names.rbegin() + 1, names.rend(), [&joined](const char* name) { joined.append("/").append(name); });
  return joined;
}

std::span<BX_INSTANCE* const> tree_index::instances_named(const char* name) const noexcept {
  return content_->tree.named().find(ut_text(name));
}

BX_WIRE* tree_index::wire(const BX_INSTANCE& inst, const char* name, const BX_WIRE* after) const noexcept {
  const auto& here = content_->numbers.find(inst);
  if (here.inst == nullptr) return nullptr;
  bx_long found = -1;
  if (after == nullptr) {
    found = content_->wire_lists.first(here.wire_list, inst, ut_text(name));
  } else if (const bx_long from = inst.wires.intgetindex(after); from >= 0) {
    found = content_->wire_lists.next(here.wire_list, inst, ut_text(name), from);
  }
  return found >= 0 ? here.wires + found : nullptr;
}

void tree_index::instances_at(bx_long x, bx_long y, std::vector<BX_INSTANCE*>& found) const {
  instances_meeting(x, y, x, y, found);
}

void tree_index::instances_meeting(bx_long x1, bx_long y1, bx_long x2, bx_long y2,
                                   std::vector<BX_INSTANCE*>& found) const {
  found.clear();
  const UT_EXTREMA box{std::min(x1, x2), std::max(x1, x2), std::min(y1, y2), std::max(y1, y2)};
  const std::span<BX_INSTANCE* const> instances = content_->tree.instances();
  content_->tree.boxes().for_each_meeting(box, [&](std::size_t number) { found.push_back(instances[number]); });
}

void tree_index::wires_at(bx_long x, bx_long y, std::vector<placed_wire>& found) const {
  found.clear();
  content_->nodes.for_each_at(x, y, [&found](BX_WIRE* wire, BX_INSTANCE* inst) { found.push_back({wire, inst}); });
}

std::size_t tree_index::memory() const noexcept {
  return sizeof(content) + content_->tree.memory() + content_->numbers.memory() + content_->wire_lists.memory() +
         content_->nodes.memory();
}

}  // namespace qelmodb
