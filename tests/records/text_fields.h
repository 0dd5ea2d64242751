// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A text file of a tree, written down field by field.
#pragma once

#include "file_fields.h"

namespace test {

// The least that a record takes: quotes, " (,)", line ends, counts of one digit without theirs.
inline constexpr int least_text_wire = 2 + 4 + 1;
inline constexpr int least_text_instance = 2 + 4 + 4 + 1 + 1 + 1;
inline constexpr int least_text_grid_instance = least_text_instance - 1;

/// Writes a tree as text.
class text_fields {
 public:
  text_fields(const plain_instance& root, content what) : file(what) {
    file.add_first_line('A');
    add(root);
  }

  described_file file;

 private:
  void add(const plain_instance& inst) {
    file.begin_record(static_cast<bx_long>(inst.children.size()));
    add_name("BX_INSTANCE:", " ", inst.name);
    add_point("xmin", inst.edges.xmin, "ymin", inst.edges.ymin);
    add_point("xmax", inst.edges.xmax, "ymax", inst.edges.ymax);
    file.add(sort::record_end, "line end", "\n");
    file.enter_record(inst.name);
    if (file.what == content::database) {
      add_count(sort::wire_count, "wire count", inst.wires.size(), least_text_wire);
      for (const plain_wire& wire : inst.wires) add(wire);
    }
    const bool is_grid = file.what == content::grid;
    add_count(sort::child_count, "child count", inst.children.size(),
              is_grid ? least_text_grid_instance : least_text_instance);
    for (const plain_instance& child : inst.children) add(child);
    file.leave_record();
  }

  void add(const plain_wire& wire) {
    add_name("BX_WIRE:", "  ", wire.name);
    add_point("x", wire.x, "y", wire.y);
    file.add(sort::record_end, "line end", "\n");
  }

  void add_name(const char* label, const char* gap, const std::string& name) {
    file.add(sort::label, label, label);
    file.add(sort::label_gap, "blanks", gap);
    file.add(sort::open_quote, "opening quote", "\"");
    file.add(sort::name, "name", name);
    file.add(sort::close_quote, "closing quote", "\"");
  }

  void add_point(const char* a, bx_long first, const char* b, bx_long second) {
    file.add(sort::point_gap, "blank before a point", " ");
    file.add(sort::open_point, "parenthesis", "(");
    file.add(sort::number, a, std::to_string(first));
    file.add(sort::comma, "comma", ",");
    file.add(sort::number_gap, "blank in a point", " ");
    file.add(sort::number, b, std::to_string(second));
    file.add(sort::close_point, "parenthesis", ")");
  }

  void add_count(sort kind, const char* label, std::size_t number, int least) {
    file.add(kind, label, std::to_string(number), static_cast<bx_long>(number), least);
    file.add(sort::count_end, "line end", "\n");
  }
};

}  // namespace test
