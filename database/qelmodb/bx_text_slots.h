// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A hash table from texts to numbers, whose texts lie elsewhere. Eight bytes a slot, at least half of them free.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "ut_hash.h"

/// The hash that the tables of one process work with.
inline std::uint32_t bx_text_hash(const char* text, std::uint64_t seed) noexcept {
  return static_cast<std::uint32_t>(ut_hash(std::string_view(text), seed));
}

struct bx_text_slot {
  std::uint32_t hash;
  std::uint32_t number_and_one;  ///< 0 when the slot is free
};

/// How many slots a table for so many texts has.
inline std::size_t bx_text_slots_for(std::size_t texts) noexcept { return std::bit_ceil(2 * texts + 1); }

/// The slot of the text, or the free one where it belongs. mask is the number of slots less one; text_of(number) gives
/// the text of an entry.
template <class TextOf>
bx_text_slot* bx_text_slot_of(bx_text_slot* slots, std::size_t mask, std::uint32_t hash, const char* text,
                              TextOf text_of) noexcept {
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    bx_text_slot& slot = slots[i];
    if (slot.number_and_one == 0) return &slot;
    if (slot.hash == hash && std::strcmp(text_of(slot.number_and_one - 1), text) == 0) return &slot;
  }
}

template <class TextOf>
const bx_text_slot* bx_text_slot_of(const bx_text_slot* slots, std::size_t mask, std::uint32_t hash, const char* text,
                                    TextOf text_of) noexcept {
  return bx_text_slot_of(const_cast<bx_text_slot*>(slots), mask, hash, text, text_of);
}
