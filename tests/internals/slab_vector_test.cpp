// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_slab_vector.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <utility>

namespace {

using numbers = UT_SLAB_VECTOR<std::uint32_t>;

TEST(SlabVector, KeepsItsElementsWhileItGrows) {
  UT_SLABS slabs;
  numbers grown{UT_SLAB_ALLOCATOR<std::uint32_t>(slabs)};
  for (std::uint32_t i = 0; i < 100000; ++i) grown.push_back(i);
  const numbers moved = std::move(grown);
  std::vector<std::uint32_t> expected(100000);
  std::iota(expected.begin(), expected.end(), 0U);
  EXPECT_TRUE(std::equal(moved.begin(), moved.end(), expected.begin(), expected.end()));
}

TEST(SlabVector, LiesInTheSlabsBesideOthers) {
  UT_SLABS slabs;
  slabs.expect(std::size_t{1} << 20);
  numbers first(1000, UT_SLAB_ALLOCATOR<std::uint32_t>(slabs));
  const numbers second(1000, UT_SLAB_ALLOCATOR<std::uint32_t>(slabs));
  const auto apart = static_cast<std::size_t>(second.data() - first.data());
  EXPECT_GE(apart, first.size());
  EXPECT_LT(apart, first.size() + 64);
}

TEST(SlabVector, OfMoreThanThereIsThrows) {
  UT_SLABS slabs;
  UT_SLAB_ALLOCATOR<std::uint32_t> allocator(slabs);
  EXPECT_THROW(static_cast<void>(allocator.allocate(SIZE_MAX / 2)), std::bad_alloc);
}

}  // namespace
