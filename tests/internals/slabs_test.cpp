// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_slabs.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <vector>

#include "ut_osmemory.h"

namespace {

TEST(Slabs, GiveStorageThatIsAlignedAndNobodyElses) {
  UT_SLABS slabs;
  struct taken {
    unsigned char* at;
    std::size_t size;
  };
  std::vector<taken> all;
  std::mt19937 random(1);
  for (int i = 0; i < 3000; ++i) {
    // Mostly small, now and then larger than any piece so far, or than a huge page.
    const std::size_t size = random() % 100 == 0 ? random() % (5U << 20) : random() % 5000;
    auto* at = static_cast<unsigned char*>(slabs.take(size));
    ASSERT_NE(at, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(at) % 8, 0U);
    std::memset(at, i % 251, size);
    all.push_back({at, size});
  }
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t k = 0; k < all[i].size; k += 97) ASSERT_EQ(all[i].at[k], i % 251);
    if (all[i].size != 0) {
      ASSERT_EQ(all[i].at[all[i].size - 1], i % 251);
    }
  }
}

TEST(Slabs, ThatCannotBeGivenThrow) {
  UT_SLABS slabs;
  EXPECT_THROW(slabs.take(SIZE_MAX), std::bad_alloc);
  EXPECT_THROW(slabs.take(SIZE_MAX - ut_huge_page - 64), std::bad_alloc);
  EXPECT_THROW(slabs.take(SIZE_MAX / 4), std::bad_alloc);
  EXPECT_NE(slabs.take(16), nullptr);
}

TEST(Slabs, GoOnAfterTheyWereTrimmed) {
  UT_SLABS slabs;
  std::vector<unsigned char*> all;
  for (int i = 0; i < 300; ++i) {
    constexpr std::size_t size = 30000;
    auto* at = static_cast<unsigned char*>(slabs.take(size));
    for (std::size_t k = 0; k < size; ++k) ASSERT_EQ(at[k], 0);
    std::memset(at, i % 251, size);
    all.push_back(at);
    slabs.trim();
    for (std::size_t k = 0; k < all.size(); ++k) {
      ASSERT_EQ(all[k][0], k % 251);
      ASSERT_EQ(all[k][size - 1], k % 251);
    }
  }
}

#if defined(__SANITIZE_ADDRESS__)
TEST(SlabsDeathTest, ReportUseBeyondWhatWasTaken) {
  UT_SLABS slabs;
  auto* first = static_cast<unsigned char*>(slabs.take(100));
  slabs.take(100);
  EXPECT_DEATH(first[100] = 1, "use-after-poison");
}
#endif

TEST(FreshMemory, IsZeroedAndLargePiecesBeginWhereAHugePageDoes) {
  for (const std::size_t size : {std::size_t{4096}, std::size_t{256} << 10, ut_huge_page, 3 * ut_huge_page}) {
    auto* memory = static_cast<unsigned char*>(ut_fresh_memory(size));
    ASSERT_NE(memory, nullptr);
    for (std::size_t i = 0; i < size; i += 512) ASSERT_EQ(memory[i], 0);
    memory[0] = 1;
    memory[size - 1] = 1;
    if (size >= ut_huge_page) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory) % ut_huge_page, 0U);
    }
    ut_release_memory(memory, size);
  }
}

}  // namespace
