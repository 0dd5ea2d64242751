// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_check_templates.h"

#include <algorithm>

#include "bx_check_tree.h"
#include "bx_delta_coding.h"

using qelmodb::severity;

namespace {

/// A layout while it is read.
struct layout_in_hand {
  std::string_view name;
  std::uint16_t numwires = 0;
  std::vector<bx_checked_wire> wires;
};

}  // namespace

// The record goes on behind these faults.
bool bx_template_checker::warn(std::size_t at, std::string message) {
  context_.add(severity::warning, at, std::move(message));
  return true;
}

bool bx_template_checker::object(std::size_t at, std::string message) {
  context_.add(severity::error, at, std::move(message));
  return true;
}

bool bx_template_checker::field(const char* label, std::uint16_t& value) {
  const char* bytes = take(label, 2);
  if (bytes != nullptr) value = static_cast<std::uint16_t>(bx_decode(bytes, 2));
  return bytes != nullptr;
}

bool bx_template_checker::field(const char* label, bx_checked_number& number) {
  number.at = context_.at();
  return field(label, number.value);
}

bool bx_template_checker::flag(const char* label, bx_checked_number& number) {
  if (!field(label, number)) return false;
  return number.value <= 1 ||
         warn(number.at, neoform("the flag \"%s\" is %d, which is read as 1", label, number.value));
}

bool bx_template_checker::array_count(const char* label, std::uint16_t& count, int least_size) {
  const std::size_t start = context_.at();
  return field(label, count) && context_.justified(start, label, count, least_size);
}

// ---- range maps

bool bx_template_checker::run_start(const char* label, bx_checked_runs& runs) {
  bx_checked_number start;
  if (!field(label, start)) return false;
  if (runs.count++ == 0) {
    runs.first_start = start;
  } else if (start.value <= runs.last_start.value) {
    object(start.at, neoform("the run that starts at %d stands behind one that starts at %d", start.value,
                             runs.last_start.value));
  }
  runs.last_start = start;
  return true;
}

bool bx_template_checker::entries(const char* label, const char* key_label, const char* value_label,
                                  bx_checked_index_runs& runs) {
  constexpr int entry_size = 4;
  constexpr int value_offset = 2;
  std::uint16_t count = 0;
  if (!array_count(label, count, entry_size)) return false;
  runs.indices = {context_.at() + value_offset, entry_size, {}};
  return each(count, [&](int /*i*/) {
    std::uint16_t value = 0;
    if (!run_start(key_label, runs) || !field(value_label, value)) return false;
    runs.indices.values.push_back(value);
    return true;
  });
}

bool bx_template_checker::entries(const char* label, const char* key_label, const char* value_label,
                                  bx_checked_runs& runs) {
  constexpr int entry_size = 10;
  std::uint16_t count = 0;
  return array_count(label, count, entry_size) &&
         each(count, [&](int /*i*/) { return run_start(key_label, runs) && take(value_label, 8) != nullptr; });
}

void bx_template_checker::check_runs(const bx_checked_number& size, const bx_checked_runs& runs,
                                     const std::string& of) {
  if (size.value > 0 && runs.count == 0) {
    object(size.at, of + neoform(" has a size of %d, but no runs", size.value));
  } else if (size.value > 0 && runs.first_start.value != 0) {
    object(runs.first_start.at, of + neoform(" has no run for 0; the first starts at %d", runs.first_start.value));
  }
  if (runs.count > 0 && runs.last_start.value >= size.value) {
    warn(runs.last_start.at,
         of + neoform(" has a run that starts at %d, beyond its size of %d", runs.last_start.value, size.value));
  }
}

void bx_template_checker::check_wire_template(const bx_checked_wire_template& wire) {
  if (wire.span_dir.value > 2) {
    warn(wire.span_dir.at, neoform("the span direction is %d, which is read as 2", wire.span_dir.value));
  }
  const bool by_column = wire.span_dir.value == 1;
  check_runs(wire.index_map.size, wire.index_map.ranges, "the index map");
  for (std::size_t i = first_size_; i < sizes_.size(); ++i) sizes_[i].by_column = !by_column;
  sizes_.push_back({wire.index_map.size.at, wire.index_map.size.value, by_column});
  check_indices(wire.index_map.ranges.indices, wire.num_offset_map, "the index map leads to offset map");
}

// Whether it goes by columns or by rows shows when the whole wire template is read.
void bx_template_checker::check_offset_map(const bx_checked_map<bx_checked_runs>& map, int number) {
  check_runs(map.size, map.ranges, neoform("offset map %d", number));
  sizes_.push_back({map.size.at, map.size.value, false});
}

void bx_template_checker::check_indices(const bx_checked_indices& indices, std::size_t count, const char* does_what) {
  for (std::size_t i = 0; i < indices.values.size(); ++i) {
    const int value = indices.values[i];
    if (static_cast<std::size_t>(value) < count) continue;
    object(indices.first_at + i * indices.distance, neoform("%s %d, but there are %zu", does_what, value, count));
  }
}

void bx_template_checker::check_sizes() {
  const std::size_t columns = set_.colmap.coordinates.size();
  const std::size_t rows = set_.rowmap.coordinates.size();
  for (const pending_size& pending : sizes_) {
    const std::size_t wanted = pending.by_column ? columns : rows;
    if (pending.size == wanted) continue;
    object(pending.at, neoform("a range map has a size of %d, but there are %zu %s", pending.size, wanted,
                               pending.by_column ? "columns" : "rows"));
  }
}

// ---- the set of switch matrices

bool bx_template_checker::wire_lists(bx_checked_set& set) {
  std::uint16_t count = 0;
  if (!array_count("wire list count", count, 2)) return false;
  std::size_t entries = 0;
  const bool sized = each(count, [&](int /*i*/) {
    const std::size_t start = context_.at();
    std::uint16_t wires = 0;
    if (!field("wire count", wires)) return false;
    set.list_sizes.push_back(wires);
    entries += wires;
    if (entries <= context_.left() / 2) return true;
    return context_.fail(
        start, neoform("the wire lists up to here have %zu wires, but the %zu bytes left hold at most %zu", entries,
                       context_.left(), context_.left() / 2));
  });
  if (!sized) return false;
  set.list_entries = {context_.at(), 2, {}};
  set.list_entries.values.reserve(entries);
  for (std::size_t i = 0; i < entries; ++i) {
    std::uint16_t entry = 0;
    if (!field("wire template", entry)) return false;
    set.list_entries.values.push_back(entry);
  }
  return true;
}

bool bx_template_checker::entries(const char* label, const char* key_label, const char* value_label,
                                  bx_checked_lines& lines) {
  constexpr int entry_size = 6;
  std::uint16_t count = 0;
  bx_long last = 0;
  return array_count(label, count, entry_size) && each(count, [&](int i) {
           const std::size_t start = context_.at();
           bx_long coordinate = 0;
           bx_checked_number line;
           if (!number(key_label, coordinate) || !field(value_label, line)) return false;
           if (i > 0 && coordinate <= last) {
             object(start,
                    neoform("the %s at %s = %d stands behind that at %d", value_label, key_label, coordinate, last));
           }
           if (line.value != i) {
             object(line.at, neoform("the %s at %s = %d has the number %d instead of %d", value_label, key_label,
                                     coordinate, line.value, i));
           }
           last = coordinate;
           lines.coordinates.insert(coordinate);
           return true;
         });
}

bool bx_template_checker::templates() {
  const bool good = matrix_set_and_layouts();
  count_names();
  return good;
}

bool bx_template_checker::matrix_set_and_layouts() {
  if (!bx_describe_matrix_set(*this, set_)) return false;
  context_.end_section("columns and rows");
  // Behind a fault columns and rows may be something else that was taken for them.
  const bool lines_known = context_.report.errors == errors_before_wire_templates_;
  check_indices(set_.list_entries, set_.num_wire_template, "a wire list has the wire template");
  set_.list_entries = {};
  if (lines_known) check_sizes();
  sizes_.clear();

  const std::size_t start = context_.at();
  bx_long count = 0;
  if (!number("template count", count)) return false;
  if (!context_.justified(start, "template count", count, bx_least_layout_size)) return false;
  for (bx_long i = 0; i < count; ++i) {
    context_.part = neoform("template %d", i);
    bx_checked_layout known;
    if (!context_.go_on() || !layout(known)) return false;
    layouts_.push_back(known);
  }
  context_.part.clear();
  context_.end_section("templates");
  return true;
}

// ---- layouts

bool bx_template_checker::delta_wire(bx_checked_wire& wire) {
  wire.at = context_.at();
  if (!cut_reference(wire.name)) return false;
  const std::size_t codes_at = context_.at();
  const char* byte = take("the codes of a wire", 1);
  if (byte == nullptr) return false;
  const unsigned codes = static_cast<unsigned char>(*byte);
  if (codes > 15) warn(codes_at, neoform("the byte of codes is %02X; its upper four bits are not looked at", codes));
  for (const bx_delta_code code : {bx_delta_x_code(codes), bx_delta_y_code(codes)}) {
    if (bx_delta_size(code) != 0 && take("a wire's node", static_cast<std::size_t>(bx_delta_size(code))) == nullptr) {
      return false;
    }
  }
  return true;
}

bool bx_template_checker::layout(bx_checked_layout& known) {
  layout_in_hand layout;
  if (!bx_describe_layout(*this, layout)) return false;
  bx_wire_order_check order(context_);
  known = {layout.name, layout.numwires, 0};
  for (const bx_checked_wire& wire : layout.wires) {
    order.next(wire.at, wire.name);
    if (wire.name.find('$') != std::string_view::npos) ++known.dollar_wires;
  }
  return true;
}
