// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Finds wires by name in many instances. Like instances have the same names in the same order; what is known about
// such a list is kept once for all of them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "bx_instance.h"
#include "bx_text_slots.h"

class bx_wire_lists {
 public:
  /// The number of the list of an instance without wires.
  static constexpr std::uint32_t none = UINT32_MAX;

  explicit bx_wire_lists(std::uint64_t seed) : seed_(seed), habits_(std::make_unique<habit_table>()) {}

  /// The number of the list of names that the instance has. Lists are the same when the addresses of their strings
  /// are.
  std::uint32_t add(const BX_INSTANCE& inst);

  /// To be called once, behind the last add.
  void finish();

  /// The index of the first wire of this name in an instance with this list, or -1. name is not null.
  bx_long first(std::uint32_t list, const BX_INSTANCE& inst, const char* name) const noexcept;

  /// The index of the next one behind a wire, or -1.
  bx_long next(std::uint32_t list, const BX_INSTANCE& inst, const char* name, bx_long after) const noexcept;

  std::size_t memory() const noexcept;

 private:
  struct list {
    const BX_WIRE* wires;  // of the first instance that has it
    bx_long count;
    bool shared = false;
    bool in_order = false;
    std::size_t slots = 0;  // place of its table in slots_
    std::size_t mask = 0;   // of the table; 0: it has none
  };

  // Which list an instance probably has, by the ends of it: one comparison instead of a hash over all names.
  struct habit {
    std::uint64_t ends = 0;
    std::uint32_t number = none;
  };
  using habit_table = std::array<habit, 4096>;

  std::uint64_t hash_of_ends(const DARRAY_BX_WIRE& wires) const noexcept;
  std::uint64_t hash_of_names(const DARRAY_BX_WIRE& wires) const noexcept;
  std::uint32_t find_or_make(const DARRAY_BX_WIRE& wires);
  void make_table(list& names);

  std::uint64_t seed_;
  std::vector<list> lists_;
  std::vector<bx_text_slot> slots_;
  // While lists are added.
  std::unique_ptr<habit_table> habits_;
  std::unordered_multimap<std::uint64_t, std::uint32_t> numbers_;
};
