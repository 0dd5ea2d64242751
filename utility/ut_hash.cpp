// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_hash.h"

#include <random>

std::uint64_t ut_hash_seed() {
  static const std::uint64_t seed = [] {
    std::random_device source;
    return (std::uint64_t{source()} << 32) ^ source();
  }();
  return seed;
}
