// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "explanation.h"
#include "json_output.h"
#include "ut_string.h"

namespace bxdb {
namespace {

/// A list of what each entry gives.
template <class List, class ToJson>
json list_of(const List& list, ToJson to_json) {
  json all = json::array();
  for (const auto& entry : list) all.push_back(to_json(entry));
  return all;
}

json losses_json(const qelmodb::compression_losses& losses) {
  return {{"cut_instances", losses.count(qelmodb::loss::cut_instance)},
          {"cut_wires", losses.count(qelmodb::loss::cut_wire)},
          {"renamed_wires", losses.count(qelmodb::loss::renamed_wire)},
          {"moved_wires", losses.count(qelmodb::loss::moved_wire)},
          {"dropped_wires", losses.count(qelmodb::loss::dropped_wire)}};
}

json template_json(const template_use& use) {
  return {{"number", use.number},       {"name", ut_text(use.layout->name)}, {"wires", use.layout->getnumwires()},
          {"instances", use.instances}, {"binary_bytes", use.binary_size},   {"record_bytes", use.record_size},
          {"saved_bytes", use.saved()}};
}

json point_json(const std::optional<BX_POINT>& point) {
  return point ? json{{"x", point->x}, {"y", point->y}} : json(nullptr);
}

json wire_difference_json(const wire_difference& wire) {
  return {{"wire", ut_text(wire.name)}, {"here", point_json(wire.here)}, {"there", point_json(wire.there)}};
}

json near_json(const explanation& about, const near_miss& miss) {
  const template_use& use = about.of(miss.number);
  return {{"template", miss.number},
          {"name", ut_text(use.layout->name)},
          {"instances", use.instances},
          {"first", {{"path", about.path_of(miss)}, {"box", rectangle_json(*use.first)}}},
          {"nearest", miss.other},
          {"nearest_instances", about.of(miss.other).instances},
          {"bytes_if_equal", use.record_size},
          {"differences", list_of(miss.wires, wire_difference_json)}};
}

json wire_list_json(const wire_list_use& list) {
  return {{"number", list.number}, {"wires", list.wires}, {"places", list.places}};
}

json wire_template_json(const wire_template_size& size) {
  const WIRE_TEMPLATE_SM& wire = *size.wire;
  const char* span = wire.span_dir == 0 ? "column" : "row";
  return {{"number", size.number},
          {"name", ut_text(wire.name)},
          {"spans_to", wire.span_dir > 1 ? json(nullptr) : json(span)},
          {"absolute", wire.absolute != 0},
          {"vectors", wire.num_offset_map},
          {"runs", size.runs},
          {"record_bytes", size.record_size}};
}

json section_json(const qelmodb::file_section& section) {
  return {{"name", section.name}, {"offset", section.offset}, {"bytes", section.bytes}};
}

}  // namespace

void print_as_json(const explanation& about) {
  const template_census& census = about.census;
  print_json({{"file", about.options.file},
              {"form", qelmodb::to_string(about.file_form)},
              {"instances", census.instances},
              {"wires", census.wires},
              {"switch_matrices", census.matrices},
              {"switch_matrix_wires", census.matrix_wires},
              {"columns", census.columns},
              {"rows", census.rows},
              {"binary_bytes", about.binary_size},
              {"compressed_bytes", about.compressed_size},
              {"ratio", about.ratio()},
              {"sections", list_of(about.sections, section_json)},
              {"losses", losses_json(about.losses)},
              {"templates", list_of(census.templates, template_json)},
              {"near_wires", about.options.near_wires},
              {"near_complete", about.near.complete},
              {"near", list_of(about.near.found, [&](const near_miss& miss) { return near_json(about, miss); })},
              {"wire_lists", list_of(census.wire_lists, wire_list_json)},
              {"wire_templates", list_of(census.wire_templates, wire_template_json)}});
}

}  // namespace bxdb
