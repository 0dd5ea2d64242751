// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the questions about a given instance need of it, by its address. Instances mostly lie close together in memory,
// and two of them never begin less than an instance apart: a block of addresses has a fixed row of slots, which one
// finds by a small table of blocks.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

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

  /// Makes the slots for these instances, which are borrowed like the slabs.
  bx_instance_numbers(std::span<BX_INSTANCE* const> instances, UT_SLABS& slabs);

  /// Of one of these.
  void add(const entry& added) noexcept { slots_[slot_of(added.inst)] = added; }

  const entry& find(const BX_INSTANCE& inst) const noexcept {
    const entry& here = slots_[slot_of(&inst)];
    return here.inst == &inst ? here : nothing_;
  }

  std::size_t memory() const noexcept;

 private:
  static constexpr std::size_t block_size = 4096;
  static constexpr std::size_t slots_of_block = (block_size - 1) / sizeof(BX_INSTANCE) + 1;

  /// A block of addresses and where its slots begin.
  struct block {
    std::uintptr_t number = none;
    std::size_t first_slot = 0;
  };
  static constexpr std::uintptr_t none = UINTPTR_MAX;

  static std::uintptr_t block_of(const BX_INSTANCE* inst) noexcept {
    return reinterpret_cast<std::uintptr_t>(inst) / block_size;
  }

  // An instance in no block has a slot of the first one, where it is not met.
  std::size_t slot_of(const BX_INSTANCE* inst) const noexcept {
    return blocks_[place_of(block_of(inst))].first_slot +
           reinterpret_cast<std::uintptr_t>(inst) % block_size / sizeof(BX_INSTANCE);
  }

  // Where in blocks_ a block is, or an empty place is for it.
  std::size_t place_of(std::uintptr_t number) const noexcept {
    const std::size_t mask = blocks_.size() - 1;
    std::size_t i = ut_hash_mix(number ^ seed_) & mask;
    while (blocks_[i].number != number && blocks_[i].number != none) i = (i + 1) & mask;
    return i;
  }

  void add_block(std::uintptr_t number);
  void grow();

  std::uint64_t seed_;
  std::vector<block> blocks_;  // open addressing, at most half full
  std::size_t count_ = 0;
  entry* slots_;  // in the slabs, which are zero at first
  entry nothing_{};
};
