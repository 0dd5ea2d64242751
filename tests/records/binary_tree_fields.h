// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A binary file of a tree, written down field by field.
#pragma once

#include "binary_fields.h"

namespace test {

inline constexpr int least_binary_wire = 8 + 4 + 4;
inline constexpr int least_binary_instance = 8 + 16 + 4 + 4;
inline constexpr int least_binary_grid_instance = 1 + 16 + 4;

/// Writes a tree in binary.
class binary_fields {
 public:
  binary_fields(const plain_instance& root, content what) : file(what), names(file) {
    file.add_first_line('B');
    if (what == content::database)
      names.add_table(
          {"TOP", "CLK", "RST", "LOGIC_1", "IN$a$b", "OUT", "BASIC_ASS", "W1", "W2", "DEEP", "", longest_name});
    add(root);
  }

  described_file file;
  name_fields names;

 private:
  void add(const plain_instance& inst) {
    const bool is_grid = file.what == content::grid;
    const bool is_root = file.records.empty();
    file.begin_record(static_cast<bx_long>(inst.children.size()));
    if (is_grid) {
      file.add(sort::stored_name, "name", inst.name);
      file.add(sort::nul, "NUL", std::string(1, '\0'));
    } else {
      names.add_reference(inst.name, is_root ? sort::root_reference : sort::reference);
    }
    add_box(file, inst.edges);
    file.enter_record(inst.name);
    if (!is_grid) {
      add_count(sort::wire_count, "wire count", inst.wires.size(), least_binary_wire);
      for (const plain_wire& wire : inst.wires) {
        names.add_reference(wire.name, sort::reference);
        file.add(sort::coordinate, "x", number(wire.x));
        file.add(sort::coordinate, "y", number(wire.y));
      }
    }
    add_count(sort::child_count, "child count", inst.children.size(),
              is_grid ? least_binary_grid_instance : least_binary_instance);
    for (const plain_instance& child : inst.children) add(child);
    file.leave_record();
  }

  void add_count(sort kind, const char* label, std::size_t count, int least) {
    const auto value = static_cast<bx_long>(count);
    file.add(kind, label, number(value), value, least);
  }
};

}  // namespace test
