// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_wire_lists.h"

#include <algorithm>

#include "bx_order.h"

namespace {

/// Whether a wire of the list has the name.
struct has_name {
  const BX_WIRE* wires;
  const char* name;

  bool operator()(std::uint32_t i) const noexcept { return bx_compare_names(wires[i].name, name) == 0; }
};

bool is_in_order(const BX_WIRE* wires, bx_long count) noexcept {
  return std::is_sorted(wires, wires + count,
                        [](const BX_WIRE& a, const BX_WIRE& b) { return bx_compare_names(a.name, b.name) < 0; });
}

}  // namespace

std::uint32_t bx_wire_lists::add(const BX_INSTANCE& inst) {
  const auto [number, is_new] = numbers_->number_of(inst);
  if (is_new) {
    lists_.push_back({.wires = inst.wires.begin(), .count = inst.getnumwires()});
  } else if (number != bx_name_lists::none) {
    add_another(number);
  }
  return number;
}

void bx_wire_lists::finish() {
  numbers_.reset();
  for (list& each : lists_) {
    each.in_order = is_in_order(each.wires, each.count);
    // What one instance alone has, and in order, is searched by halving: a table would not pay.
    if (each.shared || !each.in_order) make_table(each);
  }
}

void bx_wire_lists::make_table(list& names) {
  bx_text_table& table = names.table.emplace(static_cast<std::size_t>(names.count));
  for (bx_long i = 0; i < names.count; ++i) {
    const char* text = ut_text(names.wires[i].name);
    // Of several wires of a name the first one stays.
    table.find_or_add(table.hash_of(text), static_cast<std::uint32_t>(i), has_name{names.wires, text});
  }
}

bx_long bx_wire_lists::first(std::uint32_t number, const BX_INSTANCE& inst, const char* name) const noexcept {
  if (number == bx_name_lists::none) return -1;
  const list& names = lists_[number];
  if (!names.table) return inst.getwireid(name, -1);
  const std::uint32_t found = names.table->find(names.table->hash_of(name), has_name{names.wires, name});
  return found != bx_text_table::none ? static_cast<bx_long>(found) : -1;
}

bx_long bx_wire_lists::next(std::uint32_t number, const BX_INSTANCE& inst, const char* name,
                            bx_long after) const noexcept {
  if (number == bx_name_lists::none) return -1;
  const bool in_order = lists_[number].in_order;
  for (bx_long i = after + 1; i < inst.getnumwires(); ++i) {
    const int order = bx_compare_names(name, inst.wires[i].name);
    if (order == 0) return i;
    if (in_order && order < 0) return -1;
  }
  return -1;
}

std::size_t bx_wire_lists::memory() const noexcept {
  std::size_t bytes = lists_.capacity() * sizeof(list);
  for (const list& each : lists_) bytes += each.table ? each.table->memory() : 0;
  return bytes;
}
