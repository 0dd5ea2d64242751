// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_restore.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "bx_db.h"
#include "bx_matrix_nodes.h"
#include "bx_walk.h"
#include "qelmotmplt.h"
#include "ut_arith.h"

namespace {

/// The runs of a range map in one piece of memory.
template <class T>
class flat_map {
 public:
  explicit flat_map(const RANGE_MAP<T>& map) : map_(map) {
    starts_.reserve(map.ranges.size());
    values_.reserve(map.ranges.size());
    for (const auto& [start, value] : map.ranges) {
      starts_.push_back(start);
      values_.push_back(value);
    }
  }

  T lookup(std::uint16_t i) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), i);
    if (i >= map_.size || after == starts_.begin()) return map_.lookup(i);  // reports it
    return values_[static_cast<std::size_t>(after - starts_.begin()) - 1];
  }

 private:
  const RANGE_MAP<T>& map_;
  std::vector<std::uint16_t> starts_;
  std::vector<T> values_;
};

/// A wire template ready for millions of lookups.
class flat_template {
 public:
  explicit flat_template(const WIRE_TEMPLATE_SM& wire) : wire_(wire), index_map_(wire.index_map) {
    offset_maps_.reserve(wire.num_offset_map);
    for (int k = 0; k < wire.num_offset_map; ++k) offset_maps_.emplace_back(wire.offset_maps[k]);
  }

  const WIRE_TEMPLATE_SM& wire() const noexcept { return wire_; }

  /// False when the index map leads beyond the offset maps.
  bool offset_at(std::uint16_t column, std::uint16_t row, BX_POINT& offset) const {
    const bool by_column = wire_.span_dir == 1;
    const std::size_t map = index_map_.lookup(by_column ? column : row);
    if (map >= offset_maps_.size()) return false;
    offset = offset_maps_[map].lookup(by_column ? row : column);
    return true;
  }

 private:
  const WIRE_TEMPLATE_SM& wire_;
  flat_map<std::uint16_t> index_map_;
  std::vector<flat_map<BX_POINT>> offset_maps_;
};

}  // namespace

/// Restores the switch matrices of one set. The set must not change meanwhile.
class bx_matrix_restorer {
 public:
  explicit bx_matrix_restorer(BASIC_ASS_TEMPLATE& set) : set_(set) {
    flat_.reserve(set.num_wire_template);
    for (int i = 0; i < set.num_wire_template; ++i) flat_.emplace_back(set.wire_templates[i]);
  }

  bool restore(BX_INSTANCE& inst);

 private:
  bool restore_wire(BX_WIRE& wire, std::size_t number, std::uint16_t column, std::uint16_t row);

  BASIC_ASS_TEMPLATE& set_;
  std::vector<flat_template> flat_;
};

bool bx_matrix_restorer::restore(BX_INSTANCE& inst) {
  const int list = inst.tmpltidx();
  if (list >= set_.num_wirelist) return false;
  inst.name = set_.name;
  const int count = set_.wirelist_numwires[list];
  if (count > 0) inst.wires.getaddr(count - 1);
  const std::uint16_t column = set_.getcol(inst.xmin);
  const std::uint16_t row = set_.getrow(inst.ymin);
  bool good = true;
  for (int k = 0; k < count; ++k) good &= restore_wire(inst.wires[k], set_.wirelists[list][k], column, row);
  return good;
}

bool bx_matrix_restorer::restore_wire(BX_WIRE& wire, std::size_t number, std::uint16_t column, std::uint16_t row) {
  BX_POINT offset;
  if (number >= flat_.size() || !flat_[number].offset_at(column, row, offset)) return false;
  const BX_POINT node = bx_node_at(flat_[number].wire(), set_.corner_at(column, row), offset);
  wire.nodex = node.x;
  wire.nodey = node.y;
  wire.name = flat_[number].wire().name;
  wire.nameborrowed = true;
  return true;
}

namespace {

bool restore_from(const ASS_TEMPLATE& tmplt, BX_INSTANCE& inst) {
  inst.name = tmplt.name;
  const int count = tmplt.getnumwires();
  if (count > 0) inst.wires.getaddr(count - 1);
  for (int k = 0; k < count; ++k) {
    const BX_WIRE& relative = tmplt.getwire(k);
    BX_WIRE& wire = inst.wires[k];
    wire.name = relative.name;
    wire.nameborrowed = true;
    wire.nodex = ut_wrap_add(inst.xmin, relative.nodex);
    wire.nodey = ut_wrap_add(inst.ymin, relative.nodey);
  }
  return true;
}

/// Keeps a restorer for each database that the walk meets; as a rule there is one.
class tree_restorer {
 public:
  bool restore(BX_INSTANCE& inst) {
    inst.nameborrowed = true;
    if (inst.top == nullptr) return false;
    BX_DB& db = *inst.top;
    if (inst.is_basic_ass() != 0) return db.basicasstemplate != nullptr && restorer_of(db).restore(inst);
    const auto number = static_cast<std::size_t>(inst.tmpltidx());
    return number < db.asstemplates.size() && restore_from(*db.asstemplates[number], inst);
  }

 private:
  bx_matrix_restorer& restorer_of(BX_DB& db) {
    if (last_ == nullptr || last_db_ != &db) {
      last_ = &restorers_.try_emplace(&db, *db.basicasstemplate).first->second;
      last_db_ = &db;
    }
    return *last_;
  }

  std::unordered_map<const BX_DB*, bx_matrix_restorer> restorers_;
  const BX_DB* last_db_ = nullptr;
  bx_matrix_restorer* last_ = nullptr;
};

}  // namespace

bool bx_restore_tree(BX_INSTANCE& root) {
  tree_restorer restorer;
  bool good = true;
  bx_walk(root, [&](BX_INSTANCE& inst, bx_long /*depth*/) {
    good &= restorer.restore(inst);
    return true;
  });
  return good;
}

void BX_INSTANCE::restore() { bx_restore_tree(*this); }
