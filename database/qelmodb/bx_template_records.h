// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the records of a compressed file consist of, once for their writer, reader and checker, the least sizes
// below, and the tables of docs/file-formats.md.
//
// Beside those of bx_records.h a coder has
//   field(label, number)       a number as wide as its type; a point is two of 4 bytes
//   flag(label, value)         16 bits that are 0 or 1
//   array(label, count, items, least_size, describe)
//                              a count of 16 bits and as many items of an array
//   entries(label, key_label, value_label, map)
//                              a count of 16 bits and as many keys with their values, in ascending order
//   wire_lists(set)            the wire lists of a switch-matrix set: their number, their wire counts, their entries
//   delta_wire(wire)           see bx_delta_coding.h
// Counts and sizes are unsigned.
#pragma once

#include "bx_records.h"

inline constexpr bx_record_kind bx_template_record{"", false};

inline constexpr int bx_least_delta_wire_size = 9;      // a name reference and the byte of codes
inline constexpr int bx_least_layout_size = 10;         // name reference and wire count
inline constexpr int bx_least_wire_template_size = 18;  // name reference and five numbers of 16 bits
inline constexpr int bx_least_offset_map_size = 4;      // two numbers of 16 bits
inline constexpr int bx_least_skeleton_size = 22;

/// ASS_TEMPLATE: the layout of instances that are no switch matrices.
template <class Coder, class Layout>
bool bx_describe_layout(Coder& coder, Layout& layout) {
  return coder.begin(bx_template_record) && coder.name(layout) &&
         coder.array("wire count", layout.numwires, layout.wires, bx_least_delta_wire_size,
                     [&coder](auto& wire) { return coder.delta_wire(wire); });
}

/// WIRE_TEMPLATE_SM: one wire of the switch matrices.
template <class Coder, class Wire>
bool bx_describe_wire_template(Coder& coder, Wire& wire) {
  return coder.begin(bx_template_record) && coder.name(wire) && coder.flag("absolute", wire.absolute) &&
         coder.field("span direction", wire.span_dir) && coder.field("size of the index map", wire.index_map.size) &&
         coder.entries("run count", "run start", "offset map", wire.index_map.ranges) &&
         coder.array("offset map count", wire.num_offset_map, wire.offset_maps, bx_least_offset_map_size,
                     [&coder](auto& map) {
                       return coder.field("size of the offset map", map.size) &&
                              coder.entries("run count", "run start", "offset", map.ranges);
                     });
}

/// BASIC_ASS_TEMPLATE: what all switch matrices share.
template <class Coder, class Set>
bool bx_describe_matrix_set(Coder& coder, Set& set) {
  return coder.begin(bx_template_record) && coder.name(set) && coder.wire_lists(set) &&
         coder.array("wire template count", set.num_wire_template, set.wire_templates, bx_least_wire_template_size,
                     [&coder](auto& wire) { return bx_describe_wire_template(coder, wire); }) &&
         coder.entries("column count", "xmin", "column", set.colmap) &&
         coder.entries("row count", "ymin", "row", set.rowmap);
}

/// What a compressed file keeps of an instance, before the count of its children.
template <class Coder, class Instance>
bool bx_describe_skeleton(Coder& coder, Instance& inst) {
  return coder.pair("xmin", inst.xmin, "ymin", inst.ymin) && coder.pair("xmax", inst.xmax, "ymax", inst.ymax) &&
         coder.field("template reference", inst.tmplt);
}
