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
  const auto bytes = [](const char* from, auto number) noexcept {
    std::memcpy(&number, from, sizeof number);
    return std::uint64_t{number};
  };
  const char* at = text.data();
  std::size_t left = text.size();
  // Texts of two lengths that end in bytes alike must not meet, so the length spreads over all bits.
  std::uint64_t h = seed ^ (left * 0x9e3779b97f4a7c15U);
  for (; left > sizeof h; at += sizeof h, left -= sizeof h) h = ut_hash_mix(h ^ bytes(at, std::uint64_t{}));
  // The rest as a few numbers of fixed size, which may overlap.
  const char* const end = at + left;
  if (left == sizeof h || text.size() > sizeof h) return ut_hash_mix(h ^ bytes(end - sizeof h, std::uint64_t{}));
  if (left >= 4) return ut_hash_mix(h ^ (bytes(at, std::uint32_t{}) << 32 | bytes(end - 4, std::uint32_t{})));
  if (left == 0) return ut_hash_mix(h);
  return ut_hash_mix(h ^ (bytes(at, std::uint8_t{}) << 16 | bytes(at + left / 2, std::uint8_t{}) << 8 |
                          bytes(end - 1, std::uint8_t{})));
}

/// For tables of the standard library with texts as keys, whose own hash has no secret.
struct ut_text_hash {
  std::uint64_t seed = ut_hash_seed();
  std::size_t operator()(std::string_view text) const noexcept { return static_cast<std::size_t>(ut_hash(text, seed)); }
};
