// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Why compressing would end the process: the same steps, without changing anything.
#include <algorithm>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "bx_access.h"
#include "bx_order.h"
#include "bx_path_tracker.h"
#include "bx_template_faults.h"
#include "bx_template_index.h"
#include "bx_tileiterator.h"
#include "bx_wire_name_index.h"
#include "qelmocompress.h"
#include "qelmotmplt.h"
#include "ut_hash.h"

namespace qelmodb {
namespace {

bool is_matrix(const BX_INSTANCE& inst) { return bx_compare_names(inst.name, BASIC_ASS_NAME) == 0; }

class compression_survey {
 public:
  explicit compression_survey(const BX_DB& db)
      : db_(db), former_(db.basicasstemplate != nullptr ? *db.basicasstemplate : nothing_) {}

  std::vector<objection> objections(std::size_t most) {
    collect_matrices();
    if (!matrices_.empty()) look_at_matrices();
    look_at_layouts();
    return in_tree_order(most);
  }

 private:
  void object(const BX_INSTANCE* inst, std::string reason) { reasons_[inst].push_back(std::move(reason)); }

  void collect_matrices() {
    BX_TILEITERATOR below(const_cast<BX_DB*>(&db_));
    while (BX_INSTANCE* inst = below.getnext()) {
      if (!is_matrix(*inst)) continue;
      if (model_ == nullptr || inst->getnumwires() > model_->getnumwires()) model_ = inst;
      matrices_.push_back(inst);
    }
  }

  void look_at_matrices() {
    if (has_too_large()) return;
    std::vector<const char*> template_names;
    for (const BX_WIRE& wire : model_->wires) {
      model_numbers_[wire.name] = static_cast<int>(template_names.size());
      model_texts_.insert(ut_text(wire.name));
      template_names.push_back(wire.name);
    }
    const std::vector<BX_INSTANCE*> tiles = tiles_in_order();
    // Lists, columns and rows of an earlier compression stay.
    bx_wire_list_index lists(former_, std::move(template_names));
    for (const BX_INSTANCE* inst : tiles) add_list(lists, *inst);
    for (const BX_INSTANCE* inst : matrices_) {
      if (lists.find(*inst) < lists.count() || object_to_lacking_wires(*inst)) continue;
      object(inst, "switch matrix with wires like no other, hidden behind another one at the same place");
    }
  }

  /// Whether there are matrices of more wires than can be counted. Then nothing can be said of the others.
  bool has_too_large() {
    bool found = false;
    for (const BX_INSTANCE* inst : matrices_) {
      if (inst->getnumwires() <= static_cast<bx_long>(bx_most_list_wires)) continue;
      object(inst, neoform("switch matrix of %d wires; a template holds %zu", inst->getnumwires(), bx_most_list_wires));
      found = true;
    }
    return found;
  }

  /// As the build does. The list of an instance with wires that no template stands for is left out.
  void add_list(bx_wire_list_index& lists, const BX_INSTANCE& inst) {
    if (lists.find(inst) < lists.count()) return;
    const auto number_of = [this](const char* name) {
      const auto known = model_numbers_.find(name);
      return known != model_numbers_.end() ? known->second : bx_wire_name_number(name);
    };
    const char* missing = nullptr;
    const auto templates = static_cast<std::size_t>(model_->getnumwires());
    const std::optional<bx_wire_list> list = bx_wire_list_of(inst, templates, number_of, missing);
    if (!list) {
      object_to_lacking_wires(inst);
      return;
    }
    lists.add(*list);
    if (lists.count() == bx_most_template_index + 2) {
      object(&inst, neoform("needs a wire list beyond the %d that there can be", bx_most_template_index + 1));
    }
  }

  /// By column, then row; of several at one place the last.
  std::vector<BX_INSTANCE*> tiles_in_order() {
    std::map<std::pair<bx_long, bx_long>, BX_INSTANCE*> places;
    std::set<bx_long> columns;
    std::set<bx_long> rows;
    for (const auto& [x, column] : former_.colmap) columns.insert(x);
    for (const auto& [y, row] : former_.rowmap) rows.insert(y);
    for (BX_INSTANCE* inst : matrices_) {
      places[{inst->xmin, inst->ymin}] = inst;
      columns.insert(inst->xmin);
      rows.insert(inst->ymin);
    }
    for (const auto& [what, lines] : {std::pair("columns", &columns), std::pair("rows", &rows)}) {
      if (lines->size() <= bx_most_in_set) continue;
      object(&db_, neoform("%zu %s of switch matrices; a template set holds %zu", lines->size(), what, bx_most_in_set));
    }
    std::vector<BX_INSTANCE*> tiles;
    tiles.reserve(places.size());
    for (const auto& [place, inst] : places) tiles.push_back(inst);
    return tiles;
  }

  /// Whether the instance has wires that the richest one lacks. They are named, once for all instances with these
  /// wires. The build knows wires by their strings, not by their texts. These differ in hand-made binary files, and
  /// where cutting at "$" made names equal.
  bool object_to_lacking_wires(const BX_INSTANCE& inst) {
    const auto is_lacking = [this](const BX_WIRE& wire) { return model_numbers_.count(wire.name) == 0; };
    if (std::none_of(inst.wires.begin(), inst.wires.end(), is_lacking)) return false;
    if (!named_.number_of(inst).is_new) return true;
    for (const BX_WIRE& wire : inst.wires) {
      if (!is_lacking(wire)) continue;
      object(&inst,
             "wire \"" + std::string(ut_text(wire.name)) + "\" of a switch matrix, which the one with most wires, at " +
                 neoform("(%d, %d)", model_->xmin, model_->ymin) + ", " +
                 (model_texts_.count(ut_text(wire.name)) != 0 ? "has from another entry of the name table" : "lacks"));
    }
    return true;
  }

  void look_at_layouts() {
    std::vector<std::unique_ptr<ASS_TEMPLATE>> made;
    std::vector<ASS_TEMPLATE*> layouts = db_.asstemplates;
    bx_template_index index(layouts);
    bx_walk(db_, [&](const BX_INSTANCE& inst, bx_long depth) {
      if ((depth > 0 && is_matrix(inst)) || index.find(inst) >= 0) return true;
      if (layouts.size() > static_cast<std::size_t>(bx_most_template_index)) {
        object(&inst, neoform("needs a template beyond the %d that there can be", bx_most_template_index + 1));
        return false;
      }
      made.push_back(bx_template_of(inst));
      layouts.push_back(made.back().get());
      return true;
    });
  }

  std::vector<objection> in_tree_order(std::size_t most) {
    std::vector<objection> found;
    if (reasons_.empty()) return found;
    bx_path_tracker path;
    bx_walk(db_, [&](const BX_INSTANCE& inst, bx_long depth) {
      path.enter(inst, depth);
      const auto here = reasons_.find(&inst);
      if (here == reasons_.end()) return true;
      for (std::string& reason : here->second) {
        if (found.size() < most) found.push_back({path.text(), std::move(reason)});
      }
      return found.size() < most;
    });
    return found;
  }

  const BX_DB& db_;
  const BASIC_ASS_TEMPLATE nothing_;
  const BASIC_ASS_TEMPLATE& former_;
  std::vector<BX_INSTANCE*> matrices_;  // in tree order
  const BX_INSTANCE* model_ = nullptr;
  std::unordered_map<const char*, int> model_numbers_;
  std::unordered_set<std::string_view, ut_text_hash> model_texts_;
  bx_name_lists named_;  // wires of instances whose wires were named
  std::unordered_map<const BX_INSTANCE*, std::vector<std::string>> reasons_;
};

}  // namespace

std::vector<objection> compression_objections(const BX_DB& db, std::size_t most) {
  return compression_survey(db).objections(most);
}

}  // namespace qelmodb
