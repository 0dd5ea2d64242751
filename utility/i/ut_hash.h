// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Hashing of keys that come from files. A secret of the process goes into every hash, so that nobody can
// write a file whose keys all meet in one place of a table.
#pragma once

#include <cstring>
#include <string_view>

#include "ut_types.h"

/// A random number that stays the same while the process lives.
BX_API std::uint64_t ut_hash_seed();

/// Spreads the bits of a key over all bits of the result.
constexpr std::uint64_t ut_hash_mix(std::uint64_t key) noexcept {
  key = (key ^ (key >> 32)) * 0x9e3779b97f4a7c15U;
  key = (key ^ (key >> 29)) * 0xbf58476d1ce4e5b9U;
  return key ^ (key >> 32);
}

inline std::uint64_t ut_hash(std::uint64_t key, std::uint64_t seed) noexcept {
  return ut_hash_mix(ut_hash_mix(key ^ seed) + seed);
}

inline std::uint64_t ut_hash(std::string_view text, std::uint64_t seed) noexcept {
  std::uint64_t h = seed ^ text.size();
  std::uint64_t block = 0;
  while (text.size() >= sizeof block) {
    std::memcpy(&block, text.data(), sizeof block);
    h = ut_hash_mix(h ^ block);
    text.remove_prefix(sizeof block);
  }
  block = 0;
  if (!text.empty()) std::memcpy(&block, text.data(), text.size());
  return ut_hash_mix(h ^ block);
}
