// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the questions about a given instance need of it, by its address and in one access to memory.
#pragma once

#include <bit>
#include <cstdint>

#include "bx_fetch.h"
#include "bx_instance.h"
#include "ut_hash.h"
#include "ut_slabs.h"

class bx_instance_numbers {
 public:
  struct entry {
    const BX_INSTANCE* inst;  ///< null when the instance is not in the table
    BX_WIRE* wires;           ///< the first of them
    std::uint32_t number;
    std::uint32_t wire_list;
  };

  /// For count instances: at least a quarter of the table stays free.
  explicit bx_instance_numbers(std::size_t count)
      : mask_(std::bit_ceil(count + count / 3 + 1) - 1),
        seed_(ut_hash_seed()),
        entries_(static_cast<entry*>(memory_.take((mask_ + 1) * sizeof(entry)))) {}

  void add(const entry& added) noexcept { *place_of(*added.inst) = added; }

  /// Has the place of an instance brought nearer that is added soon.
  void fetch(const BX_INSTANCE& inst) const noexcept { bx_fetch(entries_ + first_place_of(inst)); }

  const entry& find(const BX_INSTANCE& inst) const noexcept { return *place_of(inst); }

  std::size_t memory() const noexcept { return (mask_ + 1) * sizeof(entry); }

 private:
  std::size_t first_place_of(const BX_INSTANCE& inst) const noexcept {
    return ut_hash_mix(reinterpret_cast<std::uintptr_t>(&inst) ^ seed_) & mask_;
  }

  entry* place_of(const BX_INSTANCE& inst) const noexcept {
    std::size_t i = first_place_of(inst);
    while (entries_[i].inst != nullptr && entries_[i].inst != &inst) i = (i + 1) & mask_;
    return entries_ + i;
  }

  std::size_t mask_;
  std::uint64_t seed_;
  UT_SLABS memory_;  // on huge pages: questions go to it in any order
  entry* entries_;   // fresh memory is zero
};
