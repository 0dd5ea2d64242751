// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checks the templates of a compressed file, and keeps what the checks of its tree need of them.
#pragma once

#include <unordered_set>

#include "bx_check_coders.h"
#include "bx_template_records.h"

/// A number of 16 bits and where it stands.
struct bx_checked_number {
  std::uint16_t value = 0;
  std::size_t at = 0;
};

/// The runs of a range map.
struct bx_checked_runs {
  int count = 0;
  bx_checked_number first_start;
  bx_checked_number last_start;
};

/// Indices that can be judged only when it is known how many things they lead to.
struct bx_checked_indices {
  std::size_t first_at = 0;
  std::size_t distance = 0;  // from one to the next
  std::vector<std::uint16_t> values;
};

/// Runs whose values are indices.
struct bx_checked_index_runs : bx_checked_runs {
  bx_checked_indices indices;
};

template <class Runs>
struct bx_checked_map {
  bx_checked_number size;
  Runs ranges;
};

/// Offset maps are checked one by one, and none is kept.
struct bx_checked_offset_maps {};

struct bx_checked_wire_template {
  std::string_view name;
  bx_checked_number absolute;
  bx_checked_number span_dir;
  bx_checked_map<bx_checked_index_runs> index_map;
  std::uint16_t num_offset_map = 0;
  bx_checked_offset_maps offset_maps;
};

/// Wire templates are checked one by one, and none is kept.
struct bx_checked_wire_templates {};

/// Columns or rows.
struct bx_checked_lines {
  struct hash {
    std::size_t operator()(bx_long at) const {
      return static_cast<std::size_t>(ut_hash(static_cast<bx_ulong>(at), ut_hash_seed()));
    }
  };
  std::unordered_set<bx_long, hash> coordinates;
};

struct bx_checked_set {
  std::string_view name;
  std::vector<std::uint16_t> list_sizes;
  bx_checked_indices list_entries;
  std::uint16_t num_wire_template = 0;
  bx_checked_wire_templates wire_templates;
  bx_checked_lines colmap;
  bx_checked_lines rowmap;
};

struct bx_checked_wire {
  std::string_view name;
  std::size_t at = 0;
};

/// Of a layout only the numbers are kept.
struct bx_checked_layout {
  std::string_view name;
  std::uint16_t numwires = 0;
  std::uint16_t dollar_wires = 0;
};

class bx_template_checker : public bx_binary_checker {
 public:
  explicit bx_template_checker(bx_check_context& context) : bx_binary_checker(context) { count_later(); }

  /// Everything between the name table and the tree.
  bool templates();

  const bx_checked_set& set() const noexcept { return set_; }
  const std::vector<bx_checked_layout>& layouts() const noexcept { return layouts_; }

  // ---- what the record descriptions ask for

  template <class Object>
  bool name(Object& object) {
    return reference(object.name, false);
  }
  bool field(const char* label, std::uint16_t& value);
  bool field(const char* label, bx_checked_number& number);
  bool flag(const char* label, bx_checked_number& number);

  template <class Item, class Describe>
  bool array(const char* label, std::uint16_t& count, std::vector<Item>& items, int least_size, Describe describe) {
    return array_count(label, count, least_size) && each(count, [&](int /*i*/) {
             items.emplace_back();
             return describe(items.back());
           });
  }
  template <class Describe>
  bool array(const char* label, std::uint16_t& count, bx_checked_wire_templates& /*all*/, int least_size,
             Describe describe) {
    context_.end_section("wire lists");
    errors_before_wire_templates_ = context_.report.errors;
    const bool good = array_count(label, count, least_size) && each(count, [&](int i) {
                        context_.part = neoform("wire template %d", i);
                        first_size_ = sizes_.size();
                        bx_checked_wire_template wire;
                        if (!describe(wire)) return false;
                        check_wire_template(wire);
                        return true;
                      });
    context_.part.clear();
    if (good) context_.end_section("wire templates");
    return good;
  }

  template <class Describe>
  bool array(const char* label, std::uint16_t& count, bx_checked_offset_maps& /*all*/, int least_size,
             Describe describe) {
    return array_count(label, count, least_size) && each(count, [&](int i) {
             bx_checked_map<bx_checked_runs> map;
             if (!describe(map)) return false;
             check_offset_map(map, i);
             return true;
           });
  }

  bool entries(const char* label, const char* key_label, const char* value_label, bx_checked_index_runs& runs);
  bool entries(const char* label, const char* key_label, const char* value_label, bx_checked_runs& runs);
  bool entries(const char* label, const char* key_label, const char* value_label, bx_checked_lines& lines);
  bool wire_lists(bx_checked_set& set);
  bool delta_wire(bx_checked_wire& wire);

 private:
  /// The size of a range map can be judged only when columns and rows, which stand behind it, are known.
  struct pending_size {
    std::size_t at;
    std::uint16_t size;
    bool by_column;
  };

  template <class Do>
  bool each(int count, Do act) {
    for (int i = 0; i < count; ++i) {
      if (!context_.go_on() || !act(i)) return false;
    }
    return true;
  }

  bool matrix_set_and_layouts();
  bool array_count(const char* label, std::uint16_t& count, int least_size);
  bool run_start(const char* label, bx_checked_runs& runs);
  void check_wire_template(const bx_checked_wire_template& wire);
  void check_offset_map(const bx_checked_map<bx_checked_runs>& map, int number);
  void check_runs(const bx_checked_number& size, const bx_checked_runs& runs, const std::string& of);
  void check_sizes();

  /// Reports those that do not lead to one of count things: "does what 3, but there are 2".
  void check_indices(const bx_checked_indices& indices, std::size_t count, const char* does_what);
  bool layout(bx_checked_layout& known);

  bool warn(std::size_t at, std::string message);
  bool object(std::size_t at, std::string message);

  bx_checked_set set_;
  std::vector<pending_size> sizes_;
  std::size_t first_size_ = 0;  // of the wire template in hand
  std::int64_t errors_before_wire_templates_ = 0;
  std::vector<bx_checked_layout> layouts_;
};
