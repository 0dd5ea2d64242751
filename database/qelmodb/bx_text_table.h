// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A hash table from texts to numbers, whose texts lie elsewhere. Eight bytes a slot, at least half of them free.
#pragma once

#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ut_hash.h"

class bx_text_table {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  /// With room for so many texts; it grows when there are more.
  explicit bx_text_table(std::size_t texts = 0) : slots_(std::bit_ceil(2 * texts + 2)), seed_(ut_hash_seed()) {}

  std::uint32_t hash_of(std::string_view text) const noexcept {
    return static_cast<std::uint32_t>(ut_hash(text, seed_));
  }

  /// The number of a text, by its hash, or none. same(number) tells whether the text of that number is the one.
  template <class Same>
  std::uint32_t find(std::uint32_t hash, Same same) const noexcept {
    // A free slot has 0 there, which gives none.
    return slots_[place_of(hash, same)].number_and_one - 1;
  }

  /// The same after giving a text without number this one, which is not none.
  template <class Same>
  std::uint32_t find_or_add(std::uint32_t hash, std::uint32_t number, Same same) {
    slot& place = slots_[place_of(hash, same)];
    if (place.number_and_one != 0) return place.number_and_one - 1;
    place = {hash, number + 1};
    if (2 * ++count_ > slots_.size()) grow();
    return number;
  }

  std::size_t memory() const noexcept { return slots_.capacity() * sizeof(slot); }

 private:
  struct slot {
    std::uint32_t hash;
    std::uint32_t number_and_one;  // 0 when the slot is free
  };

  template <class Same>
  std::size_t place_of(std::uint32_t hash, Same same) const noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = hash & mask;
    while (slots_[i].number_and_one != 0 && !(slots_[i].hash == hash && same(slots_[i].number_and_one - 1))) {
      i = (i + 1) & mask;
    }
    return i;
  }

  void grow() {
    std::vector<slot> old(2 * slots_.size());
    old.swap(slots_);
    for (const slot& each : old) {
      // All texts differ.
      if (each.number_and_one != 0) slots_[place_of(each.hash, [](std::uint32_t) { return false; })] = each;
    }
  }

  std::vector<slot> slots_;
  std::size_t count_ = 0;
  std::uint64_t seed_;
};
