// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The bytes of a compressed file and of its records, put together plainly.
#pragma once

#include <map>
#include <string>

#include "../records/record_bytes.h"
#include "qelmotmplt.h"

namespace test {

inline const std::string compressed_line = "BX_DB:C\n";

inline std::string word(int value) { return little_endian(static_cast<std::uint16_t>(value), 2); }

/// A delta-coded wire with the payloads given, such as {1, 0} and one byte.
inline std::string delta_wire_bytes(std::uint64_t name, int x_code, int y_code, const std::string& payload) {
  return reference(name) + static_cast<char>(x_code * 4 + y_code) + payload;
}

inline std::string index_runs(const std::map<int, int>& runs) {
  std::string bytes = word(static_cast<int>(runs.size()));
  for (const auto& [start, value] : runs) bytes += word(start) + word(value);
  return bytes;
}

inline std::string offset_runs(const std::map<int, BX_POINT>& runs) {
  std::string bytes = word(static_cast<int>(runs.size()));
  for (const auto& [start, value] : runs) bytes += word(start) + number(value.x) + number(value.y);
  return bytes;
}

inline std::string lines_bytes(const std::map<bx_long, int>& lines) {
  std::string bytes = word(static_cast<int>(lines.size()));
  for (const auto& [coordinate, index] : lines) bytes += number(coordinate) + word(index);
  return bytes;
}

inline std::string skeleton_bytes(const box& b, int reference, const std::vector<std::string>& children = {}) {
  return box_bytes(b) + word(reference) + list_bytes(children);
}

/// Writes what a compressed database holds, field by field.
class plain_compressed_file {
 public:
  explicit plain_compressed_file(const BX_DB& db) {
    std::vector<std::pair<std::uint64_t, std::string>> names;
    for (const char* name : db.names) names.emplace_back(address_of(name), name);
    bytes = compressed_line + table_bytes(names);
    write(*db.basicasstemplate);
    bytes += number(static_cast<bx_long>(db.asstemplates.size()));
    for (const ASS_TEMPLATE* layout : db.asstemplates) write(*layout);
    write(db);
  }

  std::string bytes;

 private:
  void write(const BASIC_ASS_TEMPLATE& set) {
    bytes += reference(address_of(set.name)) + word(set.num_wirelist);
    for (int k = 0; k < set.num_wirelist; ++k) bytes += word(set.wirelist_numwires[k]);
    for (int k = 0; k < set.num_wirelist; ++k) {
      for (int j = 0; j < set.wirelist_numwires[k]; ++j) bytes += word(set.wirelists[k][j]);
    }
    bytes += word(set.num_wire_template);
    for (int i = 0; i < set.num_wire_template; ++i) write(set.wire_templates[i]);
    bytes += lines_bytes({set.colmap.begin(), set.colmap.end()});
    bytes += lines_bytes({set.rowmap.begin(), set.rowmap.end()});
  }

  void write(const WIRE_TEMPLATE_SM& wire) {
    bytes += reference(address_of(wire.name)) + word(wire.absolute) + word(wire.span_dir) + word(wire.index_map.size);
    bytes += index_runs({wire.index_map.ranges.begin(), wire.index_map.ranges.end()}) + word(wire.num_offset_map);
    for (int k = 0; k < wire.num_offset_map; ++k) {
      const RANGE_MAP<BX_POINT>& map = wire.offset_maps[k];
      bytes += word(map.size) + offset_runs({map.ranges.begin(), map.ranges.end()});
    }
  }

  void write(const ASS_TEMPLATE& layout) {
    bytes += reference(address_of(layout.name)) + word(layout.getnumwires());
    for (int k = 0; k < layout.getnumwires(); ++k) write(layout.getwire(k));
  }

  void write(const BX_WIRE& wire) {
    std::string payload;
    const int x_code = code(wire.nodex, x_, payload);
    const int y_code = code(wire.nodey, y_, payload);
    bytes += delta_wire_bytes(address_of(wire.name), x_code, y_code, payload);
    begun_ = true;
    x_ = wire.nodex;
    y_ = wire.nodey;
  }

  int code(bx_long now, bx_long before, std::string& payload) const {
    // Steps wrap around at 32 bits.
    auto step = static_cast<std::int64_t>(now) - before;
    if (step > INT32_MAX) step -= std::int64_t{1} << 32;
    if (step < INT32_MIN) step += std::int64_t{1} << 32;
    int size = 4;
    if (begun_ && step >= -32768 && step <= 32767) size = step == 0 ? 0 : step >= -128 && step <= 127 ? 1 : 2;
    payload += little_endian(static_cast<std::uint64_t>(size == 4 ? now : step), size);
    return size == 4 ? 3 : size;
  }

  void write(const BX_INSTANCE& inst) {
    bytes += box_bytes({inst.xmin, inst.ymin, inst.xmax, inst.ymax}) + word(inst.tmplt);
    bytes += number(inst.getnuminstances());
    for (const BX_INSTANCE* child : inst.instances) write(*child);
  }

  bool begun_ = false;
  bx_long x_ = 0;
  bx_long y_ = 0;
};

}  // namespace test
