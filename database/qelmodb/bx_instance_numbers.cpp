// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_instance_numbers.h"

#include <algorithm>

bx_instance_numbers::bx_instance_numbers(std::span<BX_INSTANCE* const> instances, UT_SLABS& slabs)
    : seed_(ut_hash_seed()), blocks_(64) {
  std::uintptr_t last = none;
  for (const BX_INSTANCE* inst : instances) {
    const std::uintptr_t number = block_of(inst);
    if (number != last) add_block(number);
    last = number;
  }
  const std::size_t slots = std::max<std::size_t>(count_, 1) * slots_of_block;
  slots_ = static_cast<entry*>(slabs.take(slots * sizeof(entry)));
}

void bx_instance_numbers::add_block(std::uintptr_t number) {
  if ((count_ + 1) * 2 > blocks_.size()) grow();
  block& here = blocks_[place_of(number)];
  if (here.number == none) here = {number, count_++ * slots_of_block};
}

void bx_instance_numbers::grow() {
  std::vector<block> old(blocks_.size() * 2);
  old.swap(blocks_);
  for (const block& each : old) {
    if (each.number != none) blocks_[place_of(each.number)] = each;
  }
}

std::size_t bx_instance_numbers::memory() const noexcept {
  return blocks_.size() * sizeof(block) + count_ * slots_of_block * sizeof(entry);
}
