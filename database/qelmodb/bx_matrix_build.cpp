// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_matrix_build.h"

#include <algorithm>
#include <map>

#include "bx_order.h"
#include "bx_template_faults.h"
#include "bx_template_index.h"
#include "bx_tileiterator.h"
#include "bx_wire_name_index.h"
#include "qelmotmplt.h"

// The one assertion is in every build: clients know it, and it is asked only for lists that are new.
#undef NDEBUG
#include <cassert>

namespace {

BX_POINT node_of(const BX_WIRE& wire) noexcept { return {wire.nodex, wire.nodey}; }

bool number_in_order(std::map<bx_long, std::uint16_t>& map, const char* what) {
  if (map.size() > bx_most_in_set) {
    bx_report_too_many(what, map.size());
    return false;
  }
  std::uint16_t next = 0;
  for (auto& [coordinate, number] : map) number = next++;
  return true;
}

/// The first wire at a node, for each node of an instance.
class wires_by_node {
 public:
  explicit wires_by_node(const BX_INSTANCE* inst) {
    if (inst == nullptr) return;
    for (const BX_WIRE& wire : inst->wires) first_.try_emplace({wire.nodex, wire.nodey}, &wire);
  }

  const BX_WIRE* at(BX_POINT node) const {
    const auto found = first_.find({node.x, node.y});
    return found != first_.end() ? found->second : nullptr;
  }

 private:
  std::map<std::pair<bx_long, bx_long>, const BX_WIRE*> first_;
};

}  // namespace

void bx_matrix_builder::build() {
  if (!collect() || !number_lines()) return;
  const std::uint16_t former_count = set_.num_wire_template;
  const std::size_t former_sets = set_.former_templates_.size();
  WIRE_TEMPLATE_SM* const former = set_.wire_templates;
  try {
    place_tiles();
    make_wire_templates();
    if (!make_wire_lists()) return;
    find_spans();
    bx_fill_offsets(set_, tiles_);
  } catch (...) {
    // What instances refer to goes on being covered by the templates there were. New wire lists are no harm.
    if (set_.wire_templates != former) delete[] set_.wire_templates;
    set_.wire_templates = former;
    set_.num_wire_template = former_count;
    set_.former_templates_.resize(former_sets);
    set_.colmap.swap(columns_);
    set_.rowmap.swap(rows_);
    throw;
  }
}

bool bx_matrix_builder::collect() {
  BX_TILEITERATOR below(&db_);
  while (BX_INSTANCE* inst = below.getnext()) {
    if (bx_compare_names(inst->name, BASIC_ASS_NAME) != 0) continue;
    if (model_ == nullptr || inst->getnumwires() > model_->getnumwires()) model_ = inst;
    matrices_.push_back(inst);
  }
  return model_ != nullptr;
}

bool bx_matrix_builder::number_lines() {
  columns_ = set_.colmap;
  rows_ = set_.rowmap;
  for (const BX_INSTANCE* inst : matrices_) {
    columns_.emplace(inst->xmin, std::uint16_t{0});
    rows_.emplace(inst->ymin, std::uint16_t{0});
  }
  if (!number_in_order(columns_, "columns") || !number_in_order(rows_, "rows")) return false;
  if (columns_.size() != set_.colmap.size() || rows_.size() != set_.rowmap.size()) set_.measure_table();
  set_.colmap.swap(columns_);
  set_.rowmap.swap(rows_);
  set_.name = model_->name;
  return true;
}

void bx_matrix_builder::place_tiles() {
  tiles_.reserve(matrices_.size());
  for (BX_INSTANCE* inst : matrices_) {
    tiles_.push_back({set_.colmap.at(inst->xmin), set_.rowmap.at(inst->ymin), inst});
  }
  auto place = [](const tile& at) { return std::pair(at.column, at.row); };
  std::stable_sort(tiles_.begin(), tiles_.end(), [&](const tile& a, const tile& b) { return place(a) < place(b); });
  // Of several at one place the last one stays.
  const auto kept =
      std::unique(tiles_.rbegin(), tiles_.rend(), [&](const tile& a, const tile& b) { return place(a) == place(b); });
  tiles_.erase(tiles_.begin(), kept.base());
}

void bx_matrix_builder::make_wire_templates() {
  const auto count = static_cast<std::uint16_t>(static_cast<bx_ulong>(model_->getnumwires()));
  auto made = std::make_unique<WIRE_TEMPLATE_SM[]>(count);
  for (int i = 0; i < count; ++i) {
    made[static_cast<std::size_t>(i)].name = model_->wires[i].name;
    bx_set_wire_name_number(model_->wires[i].name, i);
  }
  // Clients may hold the former ones.
  if (set_.wire_templates != nullptr) set_.former_templates_.push_back(set_.wire_templates);
  set_.num_wire_template = count;
  set_.wire_templates = made.release();
}

bool bx_matrix_builder::make_wire_lists() {
  bx_wire_list_index index(set_);
  std::vector<bx_wire_list> fresh;
  for (tile& at : tiles_) {
    const std::size_t num_wirelist = set_.num_wirelist + fresh.size();
    const auto k = static_cast<std::size_t>(index.find(*at.inst));
    at.list = static_cast<int>(k);
    if (k < num_wirelist) continue;
    assert(k == num_wirelist);
    if (num_wirelist == bx_most_in_set) {
      bx_report_too_many("wire lists", bx_most_in_set + 1);
      return false;
    }
    const char* missing = nullptr;
    std::optional<bx_wire_list> list = bx_wire_list_of(*at.inst, set_.num_wire_template, bx_wire_name_number, missing);
    if (!list) {
      bx_report_missing_wire_template(missing);
      return false;
    }
    index.add(*list);
    fresh.push_back(std::move(*list));
  }
  append_lists(fresh);
  return true;
}

void bx_matrix_builder::append_lists(const std::vector<bx_wire_list>& fresh) {
  if (fresh.empty()) return;
  const std::size_t known = set_.num_wirelist;
  const std::size_t count = known + fresh.size();
  auto sizes = std::make_unique<std::uint16_t[]>(count);
  auto lists = std::make_unique<std::uint16_t*[]>(count);
  std::vector<std::unique_ptr<std::uint16_t[]>> owned;
  for (const bx_wire_list& list : fresh) {
    owned.push_back(std::make_unique<std::uint16_t[]>(list.size()));
    std::copy(list.begin(), list.end(), owned.back().get());
  }
  for (std::size_t k = 0; k < known; ++k) {
    sizes[k] = set_.wirelist_numwires[k];
    lists[k] = set_.wirelists[k];
  }
  for (std::size_t k = known; k < count; ++k) {
    sizes[k] = static_cast<std::uint16_t>(fresh[k - known].size());
    lists[k] = owned[k - known].release();
  }
  delete[] set_.wirelist_numwires;
  delete[] set_.wirelists;
  set_.wirelist_numwires = sizes.release();
  set_.wirelists = lists.release();
  set_.num_wirelist = static_cast<std::uint16_t>(count);
}

const bx_matrix_builder::tile* bx_matrix_builder::tile_at(int column, int row) const {
  const std::pair place(column, row);
  const auto found = std::lower_bound(tiles_.begin(), tiles_.end(), place, [](const tile& a, const auto& b) {
    return std::pair<int, int>(a.column, a.row) < b;
  });
  return found != tiles_.end() && found->column == column && found->row == row ? &*found : nullptr;
}

void bx_matrix_builder::find_spans() {
  const int column = set_.colmap.at(model_->xmin);
  const int row = set_.rowmap.at(model_->ymin);
  auto wires_at = [this](int c, int r) {
    const tile* found = tile_at(c, r);
    return wires_by_node(found != nullptr ? found->inst : nullptr);
  };
  const wires_by_node east = wires_at(column + 1, row);
  const wires_by_node north = wires_at(column, row + 1);
  for (int i = 0; i < set_.num_wire_template; ++i) {
    WIRE_TEMPLATE_SM& wire = set_.wire_templates[i];
    const BX_POINT node = node_of(model_->wires[i]);
    const BX_WIRE* partner = east.at(node);
    if (partner != nullptr) {
      wire.span_dir = 0;
    } else {
      partner = north.at(node);
      if (partner == nullptr) continue;
      wire.span_dir = 1;
    }
    // A name that no build has met counts as that of template 0, and is known from then on.
    int number = bx_wire_name_number(partner->name);
    if (number == bx_no_wire_number) {
      number = 0;
      bx_set_wire_name_number(partner->name, number);
    }
    if (number < 0 || number >= set_.num_wire_template) continue;
    set_.wire_templates[number].span_dir = wire.span_dir;
    if (number == i) wire.absolute = 1;
  }
}
