// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A compressed file written down field by field.
#pragma once

#include "../records/binary_fields.h"

namespace test {

/// Switch matrices in three columns and two rows, whose wires go on to the next column, to the next row and nowhere;
/// one list without wires; templates with all codes of wires; four levels.
class compressed_fields {
 public:
  static constexpr int columns = 3;
  static constexpr int rows = 2;
  static constexpr int lists = 3;
  static constexpr int wire_templates = 3;
  static constexpr int layouts = 3;

  compressed_fields() : names(file) {
    file.add_first_line('C');
    names.add_table({"TOP", "BASIC_ASS", "E", "L", "N", "LB", "GRP", "A", "B", "C", "D"});
    names.add_reference("BASIC_ASS");
    add_lists({{0, 1, 2}, {0, 2}, {}});
    add_wire_templates();
    add_lines("column count", "xmin", "column", {1, 11, 300});
    add_lines("row count", "ymin", "row", {-5, 6});
    add_layouts();
    add_tree();
  }

  described_file file{content::database};
  name_fields names;

 private:
  using run_list = std::vector<std::pair<int, int>>;
  using point_list = std::vector<std::pair<int, std::pair<bx_long, bx_long>>>;

  void add_word(sort kind, const char* label, std::size_t value, int least = 0) {
    file.add(kind, label, little_endian(value, 2), static_cast<bx_long>(value), least);
  }

  void add_lists(const std::vector<std::vector<int>>& all) {
    add_word(sort::list_count, "wire list count", all.size(), 2);
    std::size_t entries = 0;
    for (const std::vector<int>& list : all) {
      // What counts is how many entries there are up to here.
      entries += list.size();
      file.add(sort::list_size, "wire count", little_endian(list.size(), 2), static_cast<bx_long>(entries), 2);
    }
    for (const std::vector<int>& list : all) {
      for (const int entry : list) add_word(sort::list_entry, "wire template", static_cast<std::size_t>(entry));
    }
  }

  void add_wire_templates() {
    constexpr bx_long none = 2147483647;
    add_word(sort::wire_template_count, "wire template count", wire_templates, 8 + 5 * 2);
    add_wire_template("E", 1, 0, rows, {{0, 0}});
    add_offset_maps({{{0, {5, 2}}}}, columns);
    add_wire_template("L", 0, 2, rows, {{0, 0}, {1, 1}});
    add_offset_maps({{{0, {3, 4}}, {1, {3, 5}}}, {{0, {none, none}}}}, columns);
    add_wire_template("N", 1, 1, columns, {{0, 0}, {2, 1}});
    add_offset_maps({{{0, {1, 6}}}, {{0, {2, -6}}, {1, {2, 7}}}}, rows);
  }

  void add_wire_template(const char* name, std::size_t absolute, std::size_t direction, std::size_t size,
                         const run_list& runs) {
    names.add_reference(name);
    add_word(sort::flag, "absolute", absolute);
    add_word(sort::direction, "span direction", direction);
    add_word(sort::map_size, "size of the index map", size);
    add_word(sort::run_count, "run count", runs.size(), 2 + 2);
    for (const auto& [start, map] : runs) {
      add_start(start);
      add_word(sort::map_number, "offset map", static_cast<std::size_t>(map));
    }
  }

  void add_offset_maps(const std::vector<point_list>& maps, std::size_t size) {
    add_word(sort::offset_map_count, "offset map count", maps.size(), 2 + 2);
    for (const point_list& map : maps) {
      add_word(sort::map_size, "size of the offset map", size);
      add_word(sort::run_count, "run count", map.size(), 2 + 8);
      for (const auto& [start, offset] : map) {
        add_start(start);
        file.add(sort::offset, "offset", number(offset.first) + number(offset.second));
      }
    }
  }

  void add_start(int start) {
    add_word(start == 0 ? sort::first_start : sort::next_start, "run start", static_cast<std::size_t>(start));
  }

  void add_lines(const char* count_label, const char* place_label, const char* label,
                 const std::vector<bx_long>& places) {
    add_word(sort::line_count, count_label, places.size(), 4 + 2);
    for (std::size_t i = 0; i < places.size(); ++i) {
      file.add(sort::line_place, place_label, number(places[i]), places[i]);
      add_word(sort::line_number, label, i);
    }
  }

  void add_layouts() {
    file.add(sort::template_count, "template count", number(layouts), layouts, 8 + 2);
    add_layout("TOP", 1);
    add_wire("A", 3, 3, number(1), number(2));
    add_layout("LB", 4);
    add_wire("A", 0, 2, "", little_endian(300, 2));
    add_wire("B", 2, 1, little_endian(static_cast<std::uint64_t>(-301), 2), "\x01");
    add_wire("C", 3, 0, number(70000), "");
    add_wire("D", 1, 0, "\xfe", "");
    add_layout("GRP", 0);
  }

  void add_layout(const char* name, std::size_t wires) {
    names.add_reference(name);
    add_word(sort::layout_wire_count, "wire count", wires, 8 + 1);
  }

  void add_wire(const char* name, int x_code, int y_code, const std::string& x, const std::string& y) {
    names.add_reference(name);
    file.add(sort::codes, "the codes of a wire", std::string(1, static_cast<char>(x_code * 4 + y_code)));
    for (const std::string& step : {x, y}) {
      if (!step.empty()) file.add(sort::step, "a wire's node", step);
    }
  }

  void add_tree() {
    constexpr std::size_t matrix = 0x8000;
    begin("TOP", {-1, -9, 400, 50}, 0, 6);
    leaf("BASIC_ASS", {1, -5, 9, 5}, matrix);
    leaf("BASIC_ASS", {1, 6, 9, 15}, matrix + 1);
    leaf("LB", {2, 20, 3, 21}, 1);
    begin("GRP", {11, -5, 19, 15}, 2, 2);
    leaf("BASIC_ASS", {11, -5, 19, 5}, matrix);
    begin("LB", {11, 6, 19, 15}, 1, 1);
    leaf("BASIC_ASS", {11, 6, 19, 15}, matrix + 1);
    file.leave_record();
    file.leave_record();
    leaf("BASIC_ASS", {300, -5, 309, 5}, matrix + 2);
    leaf("BASIC_ASS", {300, 6, 309, 15}, matrix + 1);
    file.leave_record();
  }

  void begin(const char* name, const box& edges, std::size_t reference, bx_long children) {
    file.begin_record(children);
    // Where a switch matrix without wires lies does not matter.
    const bool placed = reference >= 0x8000 && reference != 0x8002;
    file.add(placed ? sort::matrix_x : sort::coordinate, "xmin", number(edges.xmin));
    file.add(placed ? sort::matrix_y : sort::coordinate, "ymin", number(edges.ymin));
    file.add(sort::coordinate, "xmax", number(edges.xmax));
    file.add(sort::coordinate, "ymax", number(edges.ymax));
    add_word(sort::template_reference, "template reference", reference);
    file.enter_record(name);
    file.add(sort::child_count, "child count", number(children), children, 4 * 4 + 2 + 4);
  }

  void leaf(const char* name, const box& edges, std::size_t reference) {
    begin(name, edges, reference, 0);
    file.leave_record();
  }
};

}  // namespace test
