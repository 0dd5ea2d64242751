// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_large_vector.h"

#include <gtest/gtest.h>

#include <numeric>

namespace {

constexpr std::size_t large = 4 * ut_huge_page;

TEST(LargeVector, KeepsItsElementsWhileItGrowsAndShrinks) {
  UT_LARGE_VECTOR<std::uint32_t> grown;
  for (std::uint32_t i = 0; i < large; ++i) grown.push_back(i);
  UT_LARGE_VECTOR<std::uint32_t> expected(large);
  std::iota(expected.begin(), expected.end(), 0U);
  EXPECT_EQ(grown, expected);
  grown.resize(10);
  grown.shrink_to_fit();
  EXPECT_EQ(grown, UT_LARGE_VECTOR<std::uint32_t>(expected.begin(), expected.begin() + 10));
  grown.swap(expected);
  EXPECT_EQ(grown.size(), large);
}

// From the size on at which memory comes from the system it begins with a page.
TEST(LargeVector, LiesOnPagesOfItsOwnFromASizeOn) {
  const UT_LARGE_VECTOR<char> whole(large);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(whole.data()) % 4096, 0U);
#ifndef __SANITIZE_THREAD__  // whose operator new gives whole pages
  const UT_LARGE_VECTOR<char> small(large - 1);
  EXPECT_NE(reinterpret_cast<std::uintptr_t>(small.data()) % 4096, 0U);
#endif
}

TEST(LargeVector, OfASizeThatNoMemoryHasIsRefused) {
  UT_LARGE_ALLOCATOR<std::uint64_t> allocator;
  EXPECT_THROW(allocator.allocate(SIZE_MAX / 8), std::bad_alloc);
  EXPECT_THROW(allocator.allocate(SIZE_MAX / 16), std::bad_alloc);
}

}  // namespace
