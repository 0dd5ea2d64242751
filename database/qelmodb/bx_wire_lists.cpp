// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_wire_lists.h"

#include <algorithm>

#include "bx_order.h"

namespace {

bool same_names(const BX_WIRE* a, const BX_WIRE* b, bx_long count) noexcept {
  // Differences are rare and need not be told early: a block at a time leaves the loop free of branches.
  constexpr bx_long block = 16;
  bx_long i = 0;
  for (; i + block <= count; i += block) {
    std::uintptr_t different = 0;
    for (bx_long k = i; k < i + block; ++k) {
      different |= reinterpret_cast<std::uintptr_t>(a[k].name) ^ reinterpret_cast<std::uintptr_t>(b[k].name);
    }
    if (different != 0) return false;
  }
  for (; i < count; ++i) {
    if (a[i].name != b[i].name) return false;
  }
  return true;
}

bool is_in_order(const BX_WIRE* wires, bx_long count) noexcept {
  return std::is_sorted(wires, wires + count,
                        [](const BX_WIRE& a, const BX_WIRE& b) { return bx_compare_names(a.name, b.name) < 0; });
}

}  // namespace

std::uint64_t bx_wire_lists::hash_of_ends(const DARRAY_BX_WIRE& wires) const noexcept {
  const bx_long count = wires.getcount();
  const auto first = reinterpret_cast<std::uintptr_t>(wires[0].name);
  const auto last = reinterpret_cast<std::uintptr_t>(wires[count - 1].name);
  return ut_hash_mix(ut_hash_mix(first ^ seed_) + last) + static_cast<std::uint64_t>(count);
}

std::uint64_t bx_wire_lists::hash_of_names(const DARRAY_BX_WIRE& wires) const noexcept {
  std::uint64_t hash = seed_;
  for (const BX_WIRE& wire : wires) hash = ut_hash_mix(hash ^ reinterpret_cast<std::uintptr_t>(wire.name));
  return hash;
}

std::uint32_t bx_wire_lists::add(const BX_INSTANCE& inst) {
  const DARRAY_BX_WIRE& wires = inst.wires;
  if (wires.getcount() == 0) return none;
  const std::uint64_t ends = hash_of_ends(wires);
  habit& usual = (*habits_)[ends % std::tuple_size_v<habit_table>];
  if (usual.ends == ends && usual.number != none) {
    list& guess = lists_[usual.number];
    if (guess.count == wires.getcount() && same_names(guess.wires, wires.begin(), guess.count)) {
      guess.shared = true;
      return usual.number;
    }
  }
  usual = {ends, find_or_make(wires)};
  return usual.number;
}

std::uint32_t bx_wire_lists::find_or_make(const DARRAY_BX_WIRE& wires) {
  const std::uint64_t hash = hash_of_names(wires);
  const auto [begin, end] = numbers_.equal_range(hash);
  for (auto candidate = begin; candidate != end; ++candidate) {
    list& known = lists_[candidate->second];
    if (known.count != wires.getcount() || !same_names(known.wires, wires.begin(), known.count)) continue;
    known.shared = true;
    return candidate->second;
  }
  const auto number = static_cast<std::uint32_t>(lists_.size());
  lists_.push_back({.wires = wires.begin(), .count = wires.getcount()});
  numbers_.emplace(hash, number);
  return number;
}

void bx_wire_lists::finish() {
  habits_.reset();
  numbers_ = {};
  for (list& each : lists_) {
    each.in_order = is_in_order(each.wires, each.count);
    // What one instance alone has, and in order, is searched by halving: a table would not pay.
    if (each.shared || !each.in_order) make_table(each);
  }
}

void bx_wire_lists::make_table(list& names) {
  const std::size_t size = bx_text_slots_for(static_cast<std::size_t>(names.count));
  names.slots = slots_.size();
  names.mask = size - 1;
  slots_.resize(slots_.size() + size);
  const auto text_of = [&names](std::uint32_t i) noexcept { return ut_text(names.wires[i].name); };
  for (bx_long i = 0; i < names.count; ++i) {
    const char* text = ut_text(names.wires[i].name);
    const std::uint32_t hash = bx_text_hash(text, seed_);
    bx_text_slot* slot = bx_text_slot_of(slots_.data() + names.slots, names.mask, hash, text, text_of);
    if (slot->number_and_one == 0) *slot = {hash, static_cast<std::uint32_t>(i) + 1};
  }
}

bx_long bx_wire_lists::first(std::uint32_t number, const BX_INSTANCE& inst, const char* name) const noexcept {
  if (number == none) return -1;
  const list& names = lists_[number];
  if (names.mask == 0) return inst.getwireid(name, -1);
  const auto text_of = [&names](std::uint32_t i) noexcept { return ut_text(names.wires[i].name); };
  const bx_text_slot* slot =
      bx_text_slot_of(slots_.data() + names.slots, names.mask, bx_text_hash(name, seed_), name, text_of);
  return static_cast<bx_long>(slot->number_and_one) - 1;
}

bx_long bx_wire_lists::next(std::uint32_t number, const BX_INSTANCE& inst, const char* name,
                            bx_long after) const noexcept {
  if (number == none) return -1;
  const bool in_order = lists_[number].in_order;
  for (bx_long i = after + 1; i < inst.getnumwires(); ++i) {
    const int order = bx_compare_names(name, inst.wires[i].name);
    if (order == 0) return i;
    if (in_order && order < 0) return -1;
  }
  return -1;
}

std::size_t bx_wire_lists::memory() const noexcept {
  return lists_.capacity() * sizeof(list) + slots_.capacity() * sizeof(bx_text_slot);
}
