// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_name_lists.h"

#include "ut_hash.h"

namespace {

bool same_names(const char* const* names, const BX_WIRE* wires, std::size_t count) noexcept {
  // Differences are rare and need not be told early: a block at a time leaves the loop free of branches.
  constexpr std::size_t block = 16;
  std::size_t i = 0;
  for (; i + block <= count; i += block) {
    std::uintptr_t different = 0;
    for (std::size_t k = i; k < i + block; ++k) {
      different |= reinterpret_cast<std::uintptr_t>(names[k]) ^ reinterpret_cast<std::uintptr_t>(wires[k].name);
    }
    if (different != 0) return false;
  }
  for (; i < count; ++i) {
    if (names[i] != wires[i].name) return false;
  }
  return true;
}

}  // namespace

bx_name_lists::bx_name_lists() : seed_(ut_hash_seed()), habits_(std::make_unique<habit_table>()), usual_(4096, none) {}

std::size_t bx_name_lists::place_of(const DARRAY_BX_WIRE& wires) const noexcept {
  const auto first = reinterpret_cast<std::uintptr_t>(wires[0].name);
  return ut_hash_mix((first ^ seed_) + static_cast<std::uint64_t>(wires.getcount())) % usual_.size();
}

std::uint32_t bx_name_lists::usual(const BX_INSTANCE& inst) const noexcept {
  const DARRAY_BX_WIRE& wires = inst.wires;
  if (wires.getcount() == 0) return none;
  const std::uint32_t number = usual_[place_of(wires)];
  const bool alike = number != none && lists_[number].count == static_cast<std::size_t>(wires.getcount()) &&
                     names(number)[0] == wires[0].name;
  return alike ? number : none;
}

bool bx_name_lists::is_list(std::uint32_t number, const DARRAY_BX_WIRE& wires) const noexcept {
  const list& known = lists_[number];
  return known.count == static_cast<std::size_t>(wires.getcount()) &&
         same_names(names_.data() + known.first, wires.begin(), known.count);
}

std::uint64_t bx_name_lists::hash_of_ends(const DARRAY_BX_WIRE& wires) const noexcept {
  const bx_long count = wires.getcount();
  const auto first = reinterpret_cast<std::uintptr_t>(wires[0].name);
  const auto last = reinterpret_cast<std::uintptr_t>(wires[count - 1].name);
  return ut_hash_mix(ut_hash_mix(first ^ seed_) + last) + static_cast<std::uint64_t>(count);
}

std::uint64_t bx_name_lists::hash_of_names(const DARRAY_BX_WIRE& wires) const noexcept {
  std::uint64_t hash = seed_;
  for (const BX_WIRE& wire : wires) hash = ut_hash_mix(hash ^ reinterpret_cast<std::uintptr_t>(wire.name));
  return hash;
}

bx_name_lists::answer bx_name_lists::number_of(const BX_INSTANCE& inst) {
  const DARRAY_BX_WIRE& wires = inst.wires;
  if (wires.getcount() == 0) return {none, false};
  const std::uint64_t ends = hash_of_ends(wires);
  habit& usual = (*habits_)[ends % std::tuple_size_v<habit_table>];
  if (usual.ends == ends && usual.number != none && is_list(usual.number, wires)) {
    usual_[place_of(wires)] = usual.number;
    return {usual.number, false};
  }
  const answer found = find_or_make(wires);
  usual = {ends, found.number};
  usual_[place_of(wires)] = found.number;
  return found;
}

bx_name_lists::answer bx_name_lists::find_or_make(const DARRAY_BX_WIRE& wires) {
  const std::uint64_t hash = hash_of_names(wires);
  const auto [begin, end] = numbers_.equal_range(hash);
  for (auto candidate = begin; candidate != end; ++candidate) {
    if (is_list(candidate->second, wires)) return {candidate->second, false};
  }
  const auto number = static_cast<std::uint32_t>(lists_.size());
  lists_.push_back({names_.size(), static_cast<std::size_t>(wires.getcount())});
  for (const BX_WIRE& wire : wires) names_.push_back(wire.name);
  numbers_.emplace(hash, number);
  return {number, true};
}
