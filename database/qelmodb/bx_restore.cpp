// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_restore.h"

#include <utility>
#include <vector>

#include "bx_flat_templates.h"
#include "bx_load_storage.h"
#include "bx_matrix_nodes.h"
#include "bx_walk.h"
#include "qelmotmplt.h"
#include "ut_arith.h"

/// A set ready for millions of lookups.
class bx_restorer::flat_set {
 public:
  explicit flat_set(BASIC_ASS_TEMPLATE& set) : set_(set) {
    wires_.reserve(set.num_wire_template);
    strands_.reserve(set.num_wire_template);
    for (int i = 0; i < set.num_wire_template; ++i) {
      wires_.emplace_back(set.wire_templates[i]);
      strands_.emplace_back(wires_.back());
    }
  }

  /// The place of a switch matrix. Where the set has no such column or row, no template covers it.
  place place_of(const BX_INSTANCE& inst) {
    const std::uint16_t column = set_.getcol(inst.xmin);
    const std::uint16_t row = set_.getrow(inst.ymin);
    const bool exists = column != NO_INDEX && row != NO_INDEX;
    return {column, row, exists ? set_.corner_at(column, row) : BX_POINT()};
  }

  /// What a template gives at a place, if it does. A template that does not exist leads nowhere. Reports nothing.
  bx_lookup_result find_wire(std::size_t number, const place& at, bx_restored_wire& restored) {
    if (number >= strands_.size()) return bx_lookup_result::leads_nowhere;
    bx_strand& known = strands_[number];
    if (!known.holds_at(at.column, at.row)) {
      const bx_lookup_result moved = known.move_to(at.column, at.row);
      if (moved != bx_lookup_result::found) return moved;
    }
    restored = {known.name, known.origin.node(at.corner, known.offset)};
    return bx_lookup_result::found;
  }

  /// The same; reports a place that the template does not cover. False when it leads nowhere.
  bool wire(std::size_t number, const place& at, bx_restored_wire& restored) {
    const bx_lookup_result result = find_wire(number, at, restored);
    return result == bx_lookup_result::not_covered ? wire_by_maps(number, at, restored)
                                                   : result == bx_lookup_result::found;
  }

 private:
  // By the maps that clients see, which report an index that they do not cover.
  bool wire_by_maps(std::size_t number, const place& at, bx_restored_wire& restored) const {
    const WIRE_TEMPLATE_SM& wire = set_.wire_templates[number];
    const bool by_column = wire.span_dir == 1;
    const std::uint16_t map = wire.index_map.lookup(by_column ? at.column : at.row);
    if (map >= wire.num_offset_map) return false;
    const BX_POINT offset = wire.offset_maps[map].lookup(by_column ? at.row : at.column);
    restored = {wire.name, bx_node_origin(wire).node(at.corner, offset)};
    return true;
  }

  BASIC_ASS_TEMPLATE& set_;
  std::vector<bx_flat_template> wires_;
  std::vector<bx_strand> strands_;
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
  place_ = matrices_->place_of(inst);
  name_ = set.name;
  wire_count_ = set.wirelist_numwires[number];
  return true;
}

bool bx_restorer::wire(int k, bx_restored_wire& restored) const {
  if (layout_ == nullptr) return matrices_->wire(list_[k], place_, restored);
  const BX_WIRE& relative = layout_->getwire(k);
  restored.name = relative.name;
  restored.node = {ut_wrap_add(inst_->xmin, relative.nodex), ut_wrap_add(inst_->ymin, relative.nodey)};
  return true;
}

namespace {

inline void put(const bx_restored_wire& restored, BX_WIRE& wire) noexcept {
  wire.name = restored.name;
  wire.nameborrowed = true;
  wire.nodex = restored.node.x;
  wire.nodey = restored.node.y;
}

}  // namespace

bool bx_restorer::fill(BX_WIRE* wires) {
  if (layout_ == nullptr) return wait_for_others(wires);
  for (int k = 0; k < wire_count_; ++k) {
    bx_restored_wire restored = {};
    if (wire(k, restored)) put(restored, wires[k]);
  }
  return true;
}

// Neighbours have their wires from the same templates, and from the same part of them.
bool bx_restorer::wait_for_others(BX_WIRE* wires) {
  const bool alike = waiting_set_ == matrices_ && waiting_list_ == list_;
  const bool good = (alike && waiting_count_ < waiting_.size()) || finish();
  waiting_set_ = matrices_;
  waiting_list_ = list_;
  waiting_wires_ = wire_count_;
  waiting_[waiting_count_++] = {place_, wires};
  return good;
}

bool bx_restorer::finish() {
  bool good = true;
  const std::size_t count = std::exchange(waiting_count_, 0);
  for (int k = 0; k < waiting_wires_; ++k) {
    for (std::size_t i = 0; i < count; ++i) {
      bx_restored_wire restored;
      const bx_lookup_result result = waiting_set_->find_wire(waiting_list_[k], waiting_[i].at, restored);
      if (result == bx_lookup_result::not_covered) return finish_in_order(count);
      if (result == bx_lookup_result::found) {
        put(restored, waiting_[i].wires[k]);
      } else {
        good = false;
      }
    }
  }
  return good;
}

// Matrix by matrix. The first fault that is reported ends the process, so it must be the first one of the tree, not the
// first one that the faster order comes to.
bool bx_restorer::finish_in_order(std::size_t count) {
  bool good = true;
  for (std::size_t i = 0; i < count; ++i) {
    for (int k = 0; k < waiting_wires_; ++k) {
      bx_restored_wire restored;
      const bool found = waiting_set_->wire(waiting_list_[k], waiting_[i].at, restored);
      if (found) put(restored, waiting_[i].wires[k]);
      good &= found;
    }
  }
  return good;
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
  return restorer.fill(inst.wires.begin());
}

}  // namespace

bool bx_restore_tree(BX_INSTANCE& root, const std::function<bool()>& go_on) {
  constexpr std::int64_t between = 1 << 16;  // instances and wires
  bx_restorer restorer;
  bool good = true;
  std::int64_t done = 0;
  const bool whole = bx_walk(root, [&](BX_INSTANCE& inst, bx_long /*depth*/) {
    good &= restore_instance(restorer, inst);
    done += 1 + inst.getnumwires();
    if (done < between) return true;
    done = 0;
    return go_on();
  });
  return whole && restorer.finish() && good;
}

void BX_INSTANCE::restore() {
  bx_restore_tree(*this, [] { return true; });
}
