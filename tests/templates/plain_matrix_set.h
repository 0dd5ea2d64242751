// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The template set of a database's switch matrices, written plainly: dense tables and searches from the first one on.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "qelmotmplt.h"

namespace test {

class plain_matrix_set {
 public:
  struct wire_template {
    char* name = nullptr;
    int span_dir = 2;
    bool absolute = false;
    std::vector<std::uint16_t> indices;          // by outer index
    std::vector<std::vector<BX_POINT>> vectors;  // distinct, in order of first appearance
  };

  /// Names met by earlier builds of the process go in and out through known.
  explicit plain_matrix_set(std::map<const char*, int>& known) : known_(known) {}

  plain_matrix_set(BX_DB& db, std::map<const char*, int>& known) : known_(known) { build(db); }

  /// Builds over what earlier builds left: lines and lists stay, templates are made anew. False when a wire has no
  /// template, whose name is then in missing.
  bool build(BX_DB& db) {
    model = nullptr;
    found_.clear();
    templates.clear();
    collect(db);
    if (model == nullptr) return true;
    number(columns);
    number(rows);
    table_.assign(columns.size(), std::vector<BX_INSTANCE*>(rows.size(), nullptr));
    for (BX_INSTANCE* inst : found_) table_[column_of(*inst)][row_of(*inst)] = inst;
    for (const BX_WIRE& wire : model->wires) {
      known_[wire.name] = static_cast<int>(templates.size());
      templates.push_back({wire.name, 2, false, {}, {}});
    }
    if (!find_lists()) return false;
    find_spans();
    for (std::size_t i = 0; i < templates.size(); ++i) find_offsets(i);
    return true;
  }

  /// The first list with the names of the instance's wires, or -1.
  int list_of(const BX_INSTANCE& inst) const {
    for (std::size_t k = 0; k < lists.size(); ++k) {
      bool same = lists[k].size() == static_cast<std::size_t>(inst.getnumwires());
      for (std::size_t j = 0; same && j < lists[k].size(); ++j) {
        const auto t = static_cast<std::size_t>(lists[k][j]);
        same = t < templates.size() && std::string(templates[t].name) == inst.wires[static_cast<bx_long>(j)].name;
      }
      if (same) return static_cast<int>(k);
    }
    return -1;
  }

  /// "" when the set is the same in every field.
  std::string difference(const BASIC_ASS_TEMPLATE& set) const {
    if (model == nullptr) return set.num_wirelist == lists.size() && set.colmap == columns ? "" : "changed";
    if (set.name != model->name) return "name";
    if (set.colmap != columns) return "columns";
    if (set.rowmap != rows) return "rows";
    if (set.num_wirelist != lists.size()) return "number of wire lists";
    for (std::size_t k = 0; k < lists.size(); ++k) {
      const std::uint16_t* list = set.wirelists[k];
      if (std::vector<int>(list, list + set.wirelist_numwires[k]) != lists[k]) return "wire list " + std::to_string(k);
    }
    if (set.num_wire_template != templates.size()) return "number of wire templates";
    for (std::size_t i = 0; i < templates.size(); ++i) {
      const std::string wrong = difference(set.wire_templates[i], templates[i]);
      if (!wrong.empty()) return "wire template " + std::to_string(i) + ": " + wrong;
    }
    return "";
  }

  BX_INSTANCE* model = nullptr;
  std::map<bx_long, std::uint16_t> columns;
  std::map<bx_long, std::uint16_t> rows;
  std::vector<std::vector<int>> lists;
  std::vector<wire_template> templates;
  std::string missing;

 private:
  static bool is_matrix(const BX_INSTANCE& inst) {
    return inst.name != nullptr && std::string(inst.name) == "BASIC_ASS";
  }

  void collect(const BX_INSTANCE& parent) {
    for (BX_INSTANCE* child : parent.instances) {
      collect(*child);
      if (!is_matrix(*child)) continue;
      if (model == nullptr || child->getnumwires() > model->getnumwires()) model = child;
      columns[child->xmin] = 0;
      rows[child->ymin] = 0;
      found_.push_back(child);
    }
  }

  static void number(std::map<bx_long, std::uint16_t>& lines) {
    std::uint16_t next = 0;
    for (auto& line : lines) line.second = next++;
  }

  std::size_t column_of(const BX_INSTANCE& inst) const { return columns.at(inst.xmin); }
  std::size_t row_of(const BX_INSTANCE& inst) const { return rows.at(inst.ymin); }

  BX_INSTANCE* at(std::size_t column, std::size_t row) const {
    return column < columns.size() && row < rows.size() ? table_[column][row] : nullptr;
  }

  bool find_lists() {
    list_of_.assign(columns.size(), std::vector<int>(rows.size(), -1));
    for (std::size_t c = 0; c < columns.size(); ++c) {
      for (std::size_t r = 0; r < rows.size(); ++r) {
        if (table_[c][r] == nullptr) continue;
        list_of_[c][r] = list_of(*table_[c][r]);
        if (list_of_[c][r] >= 0) continue;
        if (!append_list(*table_[c][r])) return false;
        list_of_[c][r] = static_cast<int>(lists.size()) - 1;
      }
    }
    return true;
  }

  bool append_list(const BX_INSTANCE& inst) {
    std::vector<int> list;
    for (const BX_WIRE& wire : inst.wires) {
      const auto known = known_.find(wire.name);
      // What an earlier build counted beyond the templates that there are now is as good as unknown.
      if (known == known_.end() || static_cast<std::size_t>(known->second) >= templates.size()) {
        missing = wire.name;
        return false;
      }
      list.push_back(known->second);
    }
    lists.push_back(list);
    return true;
  }

  static const BX_WIRE* first_at(const BX_INSTANCE* inst, const BX_WIRE& node) {
    if (inst == nullptr) return nullptr;
    for (const BX_WIRE& wire : inst->wires) {
      if (wire.nodex == node.nodex && wire.nodey == node.nodey) return &wire;
    }
    return nullptr;
  }

  void find_spans() {
    const BX_INSTANCE* east = at(column_of(*model) + 1, row_of(*model));
    const BX_INSTANCE* north = at(column_of(*model), row_of(*model) + 1);
    for (std::size_t i = 0; i < templates.size(); ++i) {
      const BX_WIRE& wire = model->wires[static_cast<bx_long>(i)];
      const BX_WIRE* partner = first_at(east, wire);
      int direction = 0;
      if (partner == nullptr) {
        partner = first_at(north, wire);
        direction = 1;
      }
      if (partner == nullptr) continue;
      templates[i].span_dir = direction;
      const auto t = static_cast<std::size_t>(known_.emplace(partner->name, 0).first->second);
      if (t >= templates.size()) continue;
      templates[t].span_dir = direction;
      if (t == i) templates[i].absolute = true;
    }
  }

  static bx_long less(bx_long a, bx_long b) {
    return static_cast<bx_long>(static_cast<bx_ulong>(a) - static_cast<bx_ulong>(b));
  }

  BX_POINT offset(std::size_t wire, std::size_t c, std::size_t r) const {
    if (table_[c][r] == nullptr) return NO_POINT;
    const BX_INSTANCE& inst = *table_[c][r];
    const std::vector<int>& list = lists[static_cast<std::size_t>(list_of_[c][r])];
    int position = -1;
    for (std::size_t j = 0; j < list.size(); ++j) {
      if (list[j] == static_cast<int>(wire)) position = static_cast<int>(j);
    }
    if (position < 0) return NO_POINT;
    const BX_WIRE& found = inst.wires[position];
    const wire_template& tmplt = templates[wire];
    if (tmplt.absolute && tmplt.span_dir == 1) return {less(found.nodex, inst.xmin), found.nodey};
    if (tmplt.absolute) return {found.nodex, less(found.nodey, inst.ymin)};
    return {less(found.nodex, inst.xmin), less(found.nodey, inst.ymin)};
  }

  void find_offsets(std::size_t i) {
    const bool by_column = templates[i].span_dir == 1;
    const std::size_t outer_count = by_column ? columns.size() : rows.size();
    const std::size_t along_count = by_column ? rows.size() : columns.size();
    for (std::size_t outer = 0; outer < outer_count; ++outer) {
      std::vector<BX_POINT> vector;
      for (std::size_t along = 0; along < along_count; ++along) {
        vector.push_back(by_column ? offset(i, outer, along) : offset(i, along, outer));
      }
      std::size_t k = 0;
      while (k < templates[i].vectors.size() && templates[i].vectors[k] != vector) ++k;
      if (k == templates[i].vectors.size()) templates[i].vectors.push_back(vector);
      templates[i].indices.push_back(static_cast<std::uint16_t>(k));
    }
  }

  template <class T>
  static bool same_runs(const RANGE_MAP<T>& map, const std::vector<T>& values) {
    std::map<std::uint16_t, T> runs;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (i == 0 || !(values[i] == values[i - 1])) runs[static_cast<std::uint16_t>(i)] = values[i];
    }
    return map.size == values.size() && map.ranges == runs;
  }

  static std::string difference(const WIRE_TEMPLATE_SM& wire, const wire_template& expected) {
    if (wire.name != expected.name) return "name";
    if (wire.span_dir != expected.span_dir) return "span_dir";
    if ((wire.absolute == 1) != expected.absolute) return "absolute";
    if (wire.num_offset_map != expected.vectors.size()) return "number of offset maps";
    if (!same_runs(wire.index_map, expected.indices)) return "index map";
    for (std::size_t k = 0; k < expected.vectors.size(); ++k) {
      if (!same_runs(wire.offset_maps[k], expected.vectors[k])) return "offset map " + std::to_string(k);
    }
    return "";
  }

  std::map<const char*, int>& known_;
  std::vector<BX_INSTANCE*> found_;
  std::vector<std::vector<BX_INSTANCE*>> table_;
  std::vector<std::vector<int>> list_of_;
};

}  // namespace test
