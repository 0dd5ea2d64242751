// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_basic_ass_template.h"

#include <atomic>
#include <memory>
#include <utility>

#include "bx_matrix_build.h"
#include "bx_matrix_nodes.h"
#include "bx_order.h"
#include "bx_template_faults.h"
#include "qelmotmplt.h"
#include "ut_arith.h"

WIRE_TEMPLATE_SM::~WIRE_TEMPLATE_SM() {
  delete[] offset_maps;
  offset_maps = nullptr;
}

namespace {

void release_table(BX_POINT** table, std::size_t columns) noexcept {
  for (std::size_t c = 0; c < columns; ++c) delete[] table[c];
  delete[] table;
}

}  // namespace

/// From which the corner of any place follows, as the maps were when it was made.
class BASIC_ASS_TEMPLATE::line_coordinates {
 public:
  line_coordinates(const std::map<bx_long, std::uint16_t>& colmap, const std::map<bx_long, std::uint16_t>& rowmap)
      : columns_(colmap), rows_(rowmap) {}

  BX_POINT at(std::size_t c, std::size_t r) const noexcept {
    bx_long x = 0;
    bx_long y = 0;
    return columns_.get(c, x) && rows_.get(r, y) ? BX_POINT(x, y) : NO_POINT;
  }

  /// A table of all corners.
  BX_POINT** table() const {
    std::vector<std::unique_ptr<BX_POINT[]>> columns;
    columns.reserve(columns_.size());
    for (std::size_t c = 0; c < columns_.size(); ++c) {
      columns.push_back(std::make_unique<BX_POINT[]>(rows_.size()));
      for (std::size_t r = 0; r < rows_.size(); ++r) columns.back()[r] = at(c, r);
    }
    auto* const made = new BX_POINT*[columns.size()];
    for (std::size_t c = 0; c < columns.size(); ++c) made[c] = columns[c].release();
    return made;
  }

 private:
  // Coordinates of columns or rows, by their numbers. A damaged file can give several the same number, or one beyond
  // their count.
  class numbered_coordinates {
   public:
    explicit numbered_coordinates(const std::map<bx_long, std::uint16_t>& numbers)
        : coordinates_(numbers.size()), known_(numbers.size()) {
      for (const auto& [coordinate, number] : numbers) {
        if (number >= coordinates_.size()) continue;
        coordinates_[number] = coordinate;
        known_[number] = true;
      }
    }
    std::size_t size() const noexcept { return coordinates_.size(); }
    bool get(std::size_t number, bx_long& coordinate) const noexcept {
      if (number >= coordinates_.size() || !known_[number]) return false;
      coordinate = coordinates_[number];
      return true;
    }

   private:
    std::vector<bx_long> coordinates_;
    std::vector<bool> known_;
  };

  numbered_coordinates columns_;
  numbered_coordinates rows_;
};

BASIC_ASS_TEMPLATE::BASIC_ASS_TEMPLATE() noexcept = default;

BASIC_ASS_TEMPLATE::BASIC_ASS_TEMPLATE(const BASIC_ASS_TEMPLATE& other) { *this = other; }

BASIC_ASS_TEMPLATE& BASIC_ASS_TEMPLATE::operator=(const BASIC_ASS_TEMPLATE& other) {
  if (this == &other) return *this;
  name = other.name;
  num_wirelist = other.num_wirelist;
  wirelist_numwires = other.wirelist_numwires;
  wirelists = other.wirelists;
  num_wire_template = other.num_wire_template;
  wire_templates = other.wire_templates;
  colmap = other.colmap;
  rowmap = other.rowmap;
  ins_points = other.ins_points;
  measured_ = other.measured_.load();
  coordinates_ = other.coordinates_.load();
  former_templates_ = other.former_templates_;
  return *this;
}

BASIC_ASS_TEMPLATE::~BASIC_ASS_TEMPLATE() {
  release_wire_lists();
  delete[] wire_templates;
  for (WIRE_TEMPLATE_SM* former : former_templates_) delete[] former;
  release_corners();
}

void BASIC_ASS_TEMPLATE::release_wire_lists() noexcept {
  for (int k = 0; k < num_wirelist; ++k) delete[] wirelists[k];
  delete[] wirelists;
  delete[] wirelist_numwires;
  wirelists = nullptr;
  wirelist_numwires = nullptr;
  num_wirelist = 0;
}

void BASIC_ASS_TEMPLATE::release_corners() noexcept {
  if (ins_points != nullptr) release_table(ins_points, measured(ins_points).columns);
  ins_points = nullptr;
  for (const measured_table* each = measured_.exchange(nullptr); each != nullptr;) {
    delete std::exchange(each, each->previous);
  }
  delete coordinates_.exchange(nullptr);
}

void BASIC_ASS_TEMPLATE::buildme_sm(BX_DB* db) { bx_matrix_builder(*this, *db).build(); }

std::uint16_t BASIC_ASS_TEMPLATE::getcol(bx_long x) const noexcept {
  const auto found = colmap.find(x);
  return found != colmap.end() ? found->second : NO_INDEX;
}

std::uint16_t BASIC_ASS_TEMPLATE::getrow(bx_long y) const noexcept {
  const auto found = rowmap.find(y);
  return found != rowmap.end() ? found->second : NO_INDEX;
}

std::uint16_t BASIC_ASS_TEMPLATE::get_wire_list_idx_sm(BX_INSTANCE* inst) const {
  if (bx_compare_names(inst->name, BASIC_ASS_NAME) != 0) return NO_INDEX;
  auto matches = [&](int k) {
    if (wirelist_numwires[k] != inst->getnumwires()) return false;
    for (int j = 0; j < wirelist_numwires[k]; ++j) {
      if (wirelists[k][j] >= num_wire_template) return false;
      if (bx_compare_names(inst->wires[j].name, getwirename_sm(k, j)) != 0) return false;
    }
    return true;
  };
  for (int k = 0; k < num_wirelist; ++k) {
    if (matches(k)) return static_cast<std::uint16_t>(k);
  }
  bx_report_missing_wire_list();
  return NO_INDEX;
}

// Several threads may come here at once, with the same maps: all make the same table, and one table stays.
void BASIC_ASS_TEMPLATE::init_ins_points() {
  auto size = std::make_unique<measured_table>();
  BX_POINT** const made = line_coordinates(colmap, rowmap).table();
  BX_POINT** none = nullptr;
  if (!std::atomic_ref(ins_points).compare_exchange_strong(none, made)) {
    release_table(made, colmap.size());
    return;
  }
  // Until this is known to the others, the maps tell them the same. What was measured before is not asked: a table that
  // was freed meanwhile may have been at this address.
  const bool is_empty = colmap.empty();
  *size = {
      made,   is_empty ? nullptr : made[0], is_empty ? nullptr : made[colmap.size() - 1], colmap.size(), rowmap.size(),
      nullptr};
  remember(std::move(size));
}

// The header asks clients for a table of the maps' size, so that is the size of a table that was not measured.
BASIC_ASS_TEMPLATE::measured_table BASIC_ASS_TEMPLATE::measured(BX_POINT** table) const noexcept {
  const measured_table* const known = measured_.load();
  if (known != nullptr && known->is(table)) return *known;
  if (colmap.empty()) return {table, nullptr, nullptr, 0, rowmap.size(), nullptr};
  return {table, table[0], table[colmap.size() - 1], colmap.size(), rowmap.size(), nullptr};
}

// To be called before lines are added: the table in place, if there is one, keeps the size that it has.
void BASIC_ASS_TEMPLATE::measure_table() {
  if (ins_points == nullptr) return;
  remember(std::make_unique<measured_table>(measured(ins_points)));
}

void BASIC_ASS_TEMPLATE::remember(std::unique_ptr<measured_table> size) noexcept {
  size->previous = measured_.load();
  measured_ = size.release();
}

const BASIC_ASS_TEMPLATE::line_coordinates& BASIC_ASS_TEMPLATE::known_coordinates() {
  if (coordinates_.load() == nullptr) {
    auto made = std::make_unique<line_coordinates>(colmap, rowmap);
    line_coordinates* none = nullptr;
    if (coordinates_.compare_exchange_strong(none, made.get())) static_cast<void>(made.release());
  }
  return *coordinates_.load();
}

BX_POINT BASIC_ASS_TEMPLATE::corner_at(std::uint16_t column, std::uint16_t row) {
  const std::atomic_ref table(ins_points);
  if (table.load() == nullptr) {
    if (colmap.size() * rowmap.size() > most_ins_points) return known_coordinates().at(column, row);
    init_ins_points();
  }
  BX_POINT** const points = table.load();
  const measured_table size = measured(points);
  return column < size.columns && row < size.rows ? points[column][row] : NO_POINT;
}

BX_POINT BASIC_ASS_TEMPLATE::restore_wire(BX_POINT pos, int k, int j) {
  const auto column = colmap.find(pos.x);
  const auto row = rowmap.find(pos.y);
  if (column == colmap.end() || row == rowmap.end()) {
    bx_report_no_basic_ass(pos.x, pos.y);
    return NO_POINT;
  }
  return restore_wire_sm(column->second, row->second, k, j);
}

BX_POINT BASIC_ASS_TEMPLATE::restore_wire_sm(int c, int r, int k, int j) {
  const std::uint16_t number = wirelists[k][j];
  if (number >= num_wire_template) {
    bx_report_beyond("wire template", number, num_wire_template);
    return NO_POINT;
  }
  const WIRE_TEMPLATE_SM& wire = wire_templates[number];
  const bool by_column = wire.span_dir == 1;
  const std::uint16_t map = wire.index_map.lookup(static_cast<std::uint16_t>(by_column ? c : r));
  if (map >= wire.num_offset_map) {
    bx_report_beyond("offset map", map, wire.num_offset_map);
    return NO_POINT;
  }
  const BX_POINT offset = wire.offset_maps[map].lookup(static_cast<std::uint16_t>(by_column ? r : c));
  return bx_node_origin(wire).node(corner_at(static_cast<std::uint16_t>(c), static_cast<std::uint16_t>(r)), offset);
}
