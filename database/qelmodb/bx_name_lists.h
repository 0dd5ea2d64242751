// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Numbers for the lists of wire names that instances have. Like instances have the same strings in the same order, so
// lists are told apart by the addresses of their strings: a hundred names are compared while a single text would be.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "bx_instance.h"

class bx_name_lists {
 public:
  /// The number of the list of an instance without wires.
  static constexpr std::uint32_t none = UINT32_MAX;

  bx_name_lists();

  struct answer {
    std::uint32_t number;
    bool is_new;
  };

  /// The number of the list of names that the instance has. Numbers ascend from 0 in the order of first appearance.
  answer number_of(const BX_INSTANCE& inst);

  /// The list that the last instance with as many wires and this first one had; none when there was no such instance.
  std::uint32_t usual(const BX_INSTANCE& inst) const noexcept;

  /// The names of a list, as long as none is added.
  const char* const* names(std::uint32_t number) const noexcept { return names_.data() + lists_[number].first; }

 private:
  struct list {
    std::size_t first;  // in names_
    std::size_t count;
  };

  // Which list an instance probably has, by the ends of it: one comparison instead of a hash over all names.
  struct habit {
    std::uint64_t ends = 0;
    std::uint32_t number = none;
  };
  using habit_table = std::array<habit, 4096>;

  // Its place in usual_.
  std::size_t place_of(const DARRAY_BX_WIRE& wires) const noexcept;
  bool is_list(std::uint32_t number, const DARRAY_BX_WIRE& wires) const noexcept;
  std::uint64_t hash_of_ends(const DARRAY_BX_WIRE& wires) const noexcept;
  std::uint64_t hash_of_names(const DARRAY_BX_WIRE& wires) const noexcept;
  answer find_or_make(const DARRAY_BX_WIRE& wires);

  std::uint64_t seed_;
  std::vector<list> lists_;
  std::vector<const char*> names_;
  std::unique_ptr<habit_table> habits_;
  std::vector<std::uint32_t> usual_;  // numbers of lists, by the first name and the count
  std::unordered_multimap<std::uint64_t, std::uint32_t> numbers_;
};
