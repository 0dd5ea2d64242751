// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_restore.h"

#include <algorithm>
#include <vector>

#include "bx_load_storage.h"
#include "bx_matrix_nodes.h"
#include "bx_walk.h"
#include "qelmotmplt.h"
#include "ut_arith.h"

namespace {

/// A run of a range map: its indices, from up to but not including to, and their value.
template <class T>
struct known_run {
  std::uint16_t from = 0;
  std::uint16_t to = 0;
  T value{};

  bool covers(std::uint16_t i) const noexcept { return from <= i && i < to; }
};

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

  /// The run of an index. Where there is none, which is reported, one that covers nothing.
  known_run<T> run_at(std::uint16_t i) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), i);
    if (i >= map_.size || after == starts_.begin()) return {0, 0, map_.lookup(i)};
    const std::uint16_t to = after != starts_.end() ? std::min(*after, map_.size) : map_.size;
    return {*std::prev(after), to, values_[static_cast<std::size_t>(after - starts_.begin()) - 1]};
  }

 private:
  const RANGE_MAP<T>& map_;
  std::vector<std::uint16_t> starts_;
  std::vector<T> values_;
};

/// A wire template ready for millions of lookups. Switch matrices are met column by column, so the next lookup in a map
/// mostly falls into the run of the last one. These last runs lie close together, apart from the maps: those of all
/// templates are looked at again and again and should stay in the cache.
class flat_template {
 public:
  explicit flat_template(const WIRE_TEMPLATE_SM& wire)
      : wire_(wire), index_map_(wire.index_map), last_offsets_(wire.num_offset_map) {
    offset_maps_.reserve(wire.num_offset_map);
    for (int k = 0; k < wire.num_offset_map; ++k) offset_maps_.emplace_back(wire.offset_maps[k]);
  }

  const WIRE_TEMPLATE_SM& wire() const noexcept { return wire_; }

  /// False when the index map leads beyond the offset maps.
  bool offset_at(std::uint16_t column, std::uint16_t row, BX_POINT& offset) {
    const std::uint16_t cross = wire_.span_dir == 1 ? column : row;
    const std::uint16_t along = wire_.span_dir == 1 ? row : column;
    if (!last_index_.covers(cross)) last_index_ = index_map_.run_at(cross);
    const std::size_t map = last_index_.value;
    if (map >= offset_maps_.size()) return false;
    known_run<BX_POINT>& last = last_offsets_[map];
    if (!last.covers(along)) last = offset_maps_[map].run_at(along);
    offset = last.value;
    return true;
  }

 private:
  const WIRE_TEMPLATE_SM& wire_;
  known_run<std::uint16_t> last_index_;
  flat_map<std::uint16_t> index_map_;
  std::vector<known_run<BX_POINT>> last_offsets_;
  std::vector<flat_map<BX_POINT>> offset_maps_;
};

}  // namespace

/// A set ready for millions of lookups.
class bx_restorer::flat_set {
 public:
  explicit flat_set(BASIC_ASS_TEMPLATE& set) : set_(set) {
    wires_.reserve(set.num_wire_template);
    for (int i = 0; i < set.num_wire_template; ++i) wires_.emplace_back(set.wire_templates[i]);
  }

  /// Takes up a place.
  void go_to(std::uint16_t column, std::uint16_t row) noexcept {
    column_ = column;
    row_ = row;
    has_corner_ = false;
  }

  bool wire(std::size_t number, bx_restored_wire& restored) {
    BX_POINT offset;
    if (number >= wires_.size() || !wires_[number].offset_at(column_, row_, offset)) return false;
    const WIRE_TEMPLATE_SM& wire = wires_[number].wire();
    restored = {wire.name, bx_node_at(wire, corner(), offset)};
    return true;
  }

 private:
  BX_POINT corner() {
    if (!has_corner_) corner_ = set_.corner_at(column_, row_);
    has_corner_ = true;
    return corner_;
  }

  BASIC_ASS_TEMPLATE& set_;
  std::vector<flat_template> wires_;
  std::uint16_t column_ = NO_INDEX;
  std::uint16_t row_ = NO_INDEX;
  bool has_corner_ = false;
  BX_POINT corner_;
};

bx_restorer::bx_restorer() = default;
bx_restorer::~bx_restorer() = default;

// As a rule there is one set.
bx_restorer::flat_set& bx_restorer::flat_set_of(BASIC_ASS_TEMPLATE& set) {
  if (last_set_ != &set) {
    std::unique_ptr<flat_set>& flat = flat_sets_[&set];
    if (flat == nullptr) flat = std::make_unique<flat_set>(set);
    last_flat_ = flat.get();
    last_set_ = &set;
  }
  return *last_flat_;
}

bool bx_restorer::select(const BX_INSTANCE& inst) {
  if (inst.top == nullptr) return false;
  const BX_DB& db = *inst.top;
  const int number = inst.tmpltidx();
  inst_ = &inst;
  if (inst.is_basic_ass() == 0) {
    if (static_cast<std::size_t>(number) >= db.asstemplates.size()) return false;
    layout_ = db.asstemplates[static_cast<std::size_t>(number)];
    name_ = layout_->name;
    wire_count_ = layout_->getnumwires();
    return true;
  }
  if (db.basicasstemplate == nullptr || number >= db.basicasstemplate->num_wirelist) return false;
  BASIC_ASS_TEMPLATE& set = *db.basicasstemplate;
  layout_ = nullptr;
  matrices_ = &flat_set_of(set);
  list_ = set.wirelists[number];
  matrices_->go_to(set.getcol(inst.xmin), set.getrow(inst.ymin));
  name_ = set.name;
  wire_count_ = set.wirelist_numwires[number];
  return true;
}

bool bx_restorer::wire(int k, bx_restored_wire& restored) const {
  if (layout_ == nullptr) return matrices_->wire(list_[k], restored);
  const BX_WIRE& relative = layout_->getwire(k);
  restored.name = relative.name;
  restored.node = {ut_wrap_add(inst_->xmin, relative.nodex), ut_wrap_add(inst_->ymin, relative.nodey)};
  return true;
}

namespace {

bool restore_instance(bx_restorer& restorer, BX_INSTANCE& inst) {
  inst.nameborrowed = true;
  if (!restorer.select(inst)) return false;
  inst.name = restorer.name();
  const int count = restorer.wire_count();
  if (count > inst.getnumwires()) {
    bx_reserve_wires(inst, count, count);
    inst.wires.getaddr(count - 1);
  }
  bool good = true;
  for (int k = 0; k < count; ++k) {
    bx_restored_wire restored;
    if (!restorer.wire(k, restored)) {
      good = false;
      continue;
    }
    BX_WIRE& wire = inst.wires[k];
    wire.name = restored.name;
    wire.nameborrowed = true;
    wire.nodex = restored.node.x;
    wire.nodey = restored.node.y;
  }
  return good;
}

}  // namespace

bool bx_restore_tree(BX_INSTANCE& root) {
  bx_restorer restorer;
  bool good = true;
  bx_walk(root, [&](BX_INSTANCE& inst, bx_long /*depth*/) {
    good &= restore_instance(restorer, inst);
    return true;
  });
  return good;
}

void BX_INSTANCE::restore() { bx_restore_tree(*this); }
