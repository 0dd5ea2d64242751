// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_hash.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace {

// In a block of memory that ends where the text does, so that a look beyond it is seen.
std::uint64_t hash_in_a_tight_block(const std::string& text, std::uint64_t seed) {
  const auto block = std::make_unique<char[]>(text.size());
  text.copy(block.get(), text.size());
  return ut_hash(std::string_view(block.get(), text.size()), seed);
}

TEST(Hash, OfATextDependsOnNothingElse) {
  std::string text;
  for (char c = 'a'; text.size() < 70; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
    EXPECT_EQ(hash_in_a_tight_block(text, 5), ut_hash(std::string_view(text), 5));
    EXPECT_NE(hash_in_a_tight_block(text, 5), hash_in_a_tight_block(text, 6)) << text;
    text += c;
  }
}

// Each character counts, at each place in texts of each length.
TEST(Hash, DiffersWhenACharacterOrTheLengthDoes) {
  std::set<std::uint64_t> hashes;
  std::size_t texts = 0;
  for (std::size_t length = 0; length <= 40; ++length) {
    for (std::size_t at = 0; at <= length; ++at) {
      std::string text(length, 'x');
      if (at < length) text[at] = 'y';
      hashes.insert(hash_in_a_tight_block(text, 7));
      ++texts;
    }
  }
  EXPECT_EQ(hashes.size(), texts);
}

}  // namespace
