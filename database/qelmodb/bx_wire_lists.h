// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Finds wires by name in many instances. Like instances have the same names in the same order; what is known about
// such a list is kept once for all of them.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "bx_name_lists.h"
#include "bx_text_table.h"

class bx_wire_lists {
 public:
  /// The number of the list of names that the instance has, as bx_name_lists gives it.
  std::uint32_t add(const BX_INSTANCE& inst);

  /// The list that an instance with its first wire probably has; bx_name_lists::none when nothing is known.
  std::uint32_t usual(const BX_INSTANCE& inst) const noexcept { return numbers_->usual(inst); }

  /// The names of a list, until the next add.
  const char* const* names(std::uint32_t number) const noexcept { return numbers_->names(number); }

  /// Does what add does for an instance that has this list.
  void add_another(std::uint32_t number) noexcept { lists_[number].shared = true; }

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
    std::optional<bx_text_table> table = {};
  };

  static void make_table(list& names);

  std::vector<list> lists_;
  std::unique_ptr<bx_name_lists> numbers_ = std::make_unique<bx_name_lists>();  // while lists are added
};
