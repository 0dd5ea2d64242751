// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "template_census.h"

#include "binary_sizes.h"
#include "bx_walk.h"
#include "counting_stream.h"

namespace bxdb {
namespace {

class census_taker {
 public:
  explicit census_taker(const BX_DB& db) : db_(db) {}

  template_census take() {
    list_templates();
    if (db_.basicasstemplate != nullptr) list_matrix_set(*db_.basicasstemplate);
    bx_walk(db_, [this](const BX_INSTANCE& inst, bx_long /*depth*/) {
      count(inst);
      return true;
    });
    return std::move(census_);
  }

 private:
  /// A template's first wire is coded against the last one of the template before.
  void list_templates() {
    counting_stream file;
    BX_WIRE::resetCurrentXY();
    std::int64_t before = 0;
    for (const ASS_TEMPLATE* layout : db_.asstemplates) {
      template_use use;
      use.number = static_cast<int>(census_.templates.size());
      use.layout = layout;
      layout->writeme(&file);
      use.record_size = file.count() - before;
      before += use.record_size;
      census_.templates.push_back(use);
    }
  }

  void list_matrix_set(const BASIC_ASS_TEMPLATE& set) {
    census_.columns = static_cast<std::int64_t>(set.colmap.size());
    census_.rows = static_cast<std::int64_t>(set.rowmap.size());
    for (int i = 0; i < set.num_wirelist; ++i) census_.wire_lists.push_back({i, set.getnumwires(i), 0});
    for (int i = 0; i < set.num_wire_template; ++i) list_wire_template(i, set.wire_templates[i]);
  }

  void list_wire_template(int number, const WIRE_TEMPLATE_SM& wire) {
    counting_stream file;
    wire.writeme(&file);
    std::size_t runs = wire.index_map.ranges.size();
    for (int i = 0; i < wire.num_offset_map; ++i) runs += wire.offset_maps[i].ranges.size();
    census_.wire_templates.push_back({number, &wire, static_cast<std::int64_t>(runs), file.count()});
  }

  void count(const BX_INSTANCE& inst) {
    ++census_.instances;
    census_.wires += inst.getnumwires();
    const auto number = static_cast<std::size_t>(inst.tmpltidx());
    if (inst.is_basic_ass() != 0) {
      ++census_.matrices;
      census_.matrix_wires += inst.getnumwires();
      if (number < census_.wire_lists.size()) ++census_.wire_lists[number].places;
    } else if (number < census_.templates.size()) {
      template_use& use = census_.templates[number];
      if (use.instances++ == 0) use.first = &inst;
      use.binary_size += binary_instance_size + inst.getnumwires() * binary_wire_size;
    }
  }

  const BX_DB& db_;
  template_census census_;
};

}  // namespace

template_census take_census(const BX_DB& db) { return census_taker(db).take(); }

}  // namespace bxdb
