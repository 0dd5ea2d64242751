// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_darray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <random>
#include <utility>
#include <vector>

#include "ut_msgman.h"

namespace {

struct entry {
  bx_long key;
  bx_long order;
};

using array = UT_DARRAY<entry>;

int by_key(const entry* a, const entry* b) { return a->key < b->key ? -1 : a->key > b->key ? 1 : 0; }
int key_against(bx_long key, const entry* b) { return key < b->key ? -1 : key > b->key ? 1 : 0; }

std::vector<std::pair<bx_long, bx_long>> content(const array& from) {
  std::vector<std::pair<bx_long, bx_long>> all;
  for (const entry& e : from) all.emplace_back(e.key, e.order);
  return all;
}

TEST(DynamicArray, IsEmptyAtFirst) {
  const array a(16);
  EXPECT_EQ(a.getcount(), 0);
  EXPECT_EQ(a.begin(), nullptr);
  EXPECT_EQ(a.begin(), a.end());
  EXPECT_EQ(a.a_bsearch(1, key_against), -1);
}

TEST(DynamicArray, TakesAnyGrowthStep) {
  for (const bx_long step : {-5, 0, 1, 3, 1000}) {
    array a(step);
    for (bx_long i = 0; i < 100; ++i) {
      const entry e{i, i};
      EXPECT_EQ(a.a_add(&e), i);
    }
    EXPECT_EQ(a.getcount(), 100);
    EXPECT_EQ(a[99].key, 99);
  }
}

TEST(DynamicArray, LivesInBorrowedStorageUntilItGrowsBeyondIt) {
  entry storage[3] = {};
  array a(2);
  a.a_borrow(storage, 3);
  for (bx_long i = 0; i < 3; ++i) {
    const entry e{i, i};
    a.a_add(&e);
  }
  EXPECT_EQ(a.begin(), storage);
  EXPECT_EQ(storage[2].key, 2);
  const entry more{7, 7};
  EXPECT_EQ(a.a_add(&more), 3);
  EXPECT_NE(a.begin(), storage);
  a[0].key = 99;
  EXPECT_EQ(storage[0].key, 0) << "the array has moved";
  EXPECT_EQ(content(a), (std::vector<std::pair<bx_long, bx_long>>{{99, 0}, {1, 1}, {2, 2}, {7, 7}}));
}

TEST(DynamicArray, LeavesBorrowedStorageAloneWhenEmptiedOrDestroyed) {
  entry storage[3] = {{1, 1}, {2, 2}, {3, 3}};
  {
    array a;
    a.a_borrow(storage, 3);
    a.getaddr(2);
    a.empty();
    EXPECT_EQ(a.begin(), nullptr);
    a.getaddr(1);  // storage of its own again
    EXPECT_NE(a.begin(), storage);
    a.a_borrow(storage, 3);  // too late
    EXPECT_NE(a.begin(), storage);
    array b;
    b.a_borrow(storage, 3);
  }
  storage[0].key = 5;
}

TEST(DynamicArray, TellsWhatASearchHasLeft) {
  UT_DARRAY<bx_long> a;
  for (bx_long i = 0; i < 100; ++i) a.a_add(&i);
  std::vector<std::pair<bx_long, bx_long>> left;
  const auto against = [](bx_long key, const bx_long& element) { return key - element; };
  EXPECT_EQ(a.a_bsearch(bx_long{70}, against, [&left](bx_long lo, bx_long hi) { left.emplace_back(lo, hi); }), 70);
  ASSERT_GT(left.size(), 3U);
  EXPECT_EQ(left.front(), std::pair(0, 99));
  for (std::size_t i = 1; i < left.size(); ++i) {
    EXPECT_LE(left[i].second - left[i].first, (left[i - 1].second - left[i - 1].first) / 2);
    EXPECT_TRUE(left[i].first <= 70 && 70 <= left[i].second);
  }
}

TEST(DynamicArray, CopiedUnderAManagerThatReturnsHasNothingOfTheBorrowedStorage) {
  struct returning_manager : UT_MSGMAN {
    void msgfatal(const char*, const char*, const char*, short, const char*, bx_long, bx_long) override {}
  } manager;
  entry storage[3] = {};
  array a;
  a.a_borrow(storage, 3);
  UT_MSGMAN* const usual = ut_msgman;
  ut_msgman = &manager;
  {
    array copy(a);
    ut_msgman = usual;
    entry other[3] = {};
    copy.a_borrow(other, 3);
    EXPECT_EQ(copy.getaddr(0), other);
  }  // frees neither
  EXPECT_EQ(a.getaddr(0), storage);
}

TEST(DynamicArray, MovesOutOfBorrowedStorageOnRequest) {
  entry storage[3] = {};
  array a;
  a.a_borrow(storage, 3);
  a.a_own();
  EXPECT_EQ(a.begin(), nullptr) << "nothing was in it";
  a.a_borrow(storage, 3);
  const entry e{4, 5};
  a.a_add(&e);
  a.a_own();
  EXPECT_NE(a.begin(), storage);
  const entry* own = a.begin();
  a.a_own();
  EXPECT_EQ(a.begin(), own);
  EXPECT_EQ(content(a), (std::vector<std::pair<bx_long, bx_long>>{{4, 5}}));
}

TEST(DynamicArray, SortedInsertionPutsEqualElementsBehindEachOther) {
  array a;
  bx_long order = 0;
  for (const bx_long key : {5, 3, 5, 1, 5, 3}) {
    const entry e{key, order++};
    a.a_sortadd(&e, by_key);
  }
  const std::vector<std::pair<bx_long, bx_long>> expected{{1, 3}, {3, 1}, {3, 5}, {5, 0}, {5, 2}, {5, 4}};
  EXPECT_EQ(content(a), expected);
}

TEST(DynamicArray, SortedInsertionComparesTheNewElementWithTheExistingOnesInTheMiddle) {
  array a;
  for (bx_long i = 0; i < 7; ++i) {
    const entry e{i, 0};
    a.a_add(&e);
  }
  const entry fresh{2, 1};
  std::vector<bx_long> probed;
  const bx_long at = a.a_sortadd(&fresh, [&](const entry* x, const entry* y) {
    EXPECT_EQ(x, &fresh);
    probed.push_back(y->key);
    return by_key(x, y);
  });
  EXPECT_EQ(at, 3);
  EXPECT_EQ(probed, (std::vector<bx_long>{3, 1, 2}));
}

TEST(DynamicArray, ComparatorMayTakeReferences) {
  UT_DARRAY<bx_long> a;
  for (const bx_long value : {3, 1, 2}) a.a_sortadd(&value, [](const bx_long& x, const bx_long& y) { return x - y; });
  EXPECT_EQ(std::vector<bx_long>(a.begin(), a.end()), (std::vector<bx_long>{1, 2, 3}));
  EXPECT_EQ(a.a_bsearch(bx_long{2}, [](bx_long key, const bx_long& y) { return key - y; }), 1);
}

TEST(DynamicArray, RandomInsertionsStaySortedAndStable) {
  for (unsigned seed = 1; seed <= 5; ++seed) {
    std::mt19937 random(seed);
    array a(0);
    std::vector<std::pair<bx_long, bx_long>> expected;
    for (bx_long i = 0; i < 1000; ++i) {
      const entry e{static_cast<bx_long>(random() % 60), i};
      a.a_sortadd(&e, by_key);
      expected.emplace_back(e.key, e.order);
    }
    std::stable_sort(expected.begin(), expected.end(), [](auto& x, auto& y) { return x.first < y.first; });
    EXPECT_EQ(content(a), expected);
  }
}

TEST(DynamicArray, SearchGivesTheFirstOfEqualElements) {
  array a;
  for (const bx_long key : {1, 3, 3, 3, 3, 8}) {
    const entry e{key, 0};
    a.a_sortadd(&e, by_key);
  }
  EXPECT_EQ(a.a_bsearch(1, key_against), 0);
  EXPECT_EQ(a.a_bsearch(3, key_against), 1);
  EXPECT_EQ(a.a_bsearch(8, key_against), 5);
  for (const bx_long missing : {0, 2, 5, 9}) EXPECT_EQ(a.a_bsearch(missing, key_against), -1) << missing;
}

TEST(DynamicArray, SearchStepsBackOverAdjacentEqualsOnlyWhereTheOrderIsBroken) {
  UT_DARRAY<bx_long> a;
  for (const bx_long value : {3, 1, 3, 3, 9}) a.a_add(&value);
  EXPECT_EQ(a.a_bsearch(bx_long{3}, [](bx_long key, const bx_long& y) { return key - y; }), 2);
}

TEST(DynamicArray, IndexOfAnAddressIsThatOfItsElement) {
  array a;
  for (bx_long i = 0; i < 5; ++i) {
    const entry e{i, i};
    a.a_add(&e);
  }
  for (bx_long i = 0; i < 5; ++i) EXPECT_EQ(a.intgetindex(&a[i]), i);
  const entry outside{0, 0};
  EXPECT_EQ(a.intgetindex(&outside), -1);
  EXPECT_EQ(a.intgetindex(nullptr), -1);
  EXPECT_EQ(a.intgetindex(a.end()), -1);
  EXPECT_EQ(array().intgetindex(&a[0]), -1);
}

TEST(DynamicArray, AddressOfAnElementMakesExactlyThatManyAndNeverShrinks) {
  array a;
  entry* third = a.getaddr(2);
  ASSERT_NE(third, nullptr);
  EXPECT_EQ(a.getcount(), 3);
  EXPECT_EQ(a.intgetindex(third), 2);
  for (const entry& e : a) {
    EXPECT_EQ(e.key, 0);
    EXPECT_EQ(e.order, 0);
  }
  a[1].key = 7;
  EXPECT_EQ(a.getaddr(0), &a[0]);
  EXPECT_EQ(a.getcount(), 3);
  a.getaddr(9);
  EXPECT_EQ(a.getcount(), 10);
  EXPECT_EQ(a[1].key, 7);
  EXPECT_EQ(a[9].key, 0);
  EXPECT_EQ(a.getaddr(-1), nullptr);
  EXPECT_EQ(a.getcount(), 10);
}

TEST(DynamicArray, AddressBehindElementsThatWereDroppedIsMadeAnew) {
  array a;
  a.getaddr(3)->key = 5;
  a.a_droplast();
  EXPECT_EQ(a.getcount(), 3);
  EXPECT_EQ(a.getaddr(3)->key, 0);
}

TEST(DynamicArray, DroppingTheLastOfNoneDoesNothing) {
  array a;
  a.a_droplast();
  EXPECT_EQ(a.getcount(), 0);
}

TEST(DynamicArray, EmptiedKeepsNothingAndCanBeFilledAgain) {
  array a;
  a.getaddr(50);
  a.empty();
  EXPECT_EQ(a.getcount(), 0);
  EXPECT_EQ(a.begin(), nullptr);
  a.empty();
  const entry e{4, 2};
  a.a_add(&e);
  EXPECT_EQ(a[0].key, 4);
}

TEST(DynamicArray, EmptiedLeavesAloneWhatItsElementsPointTo) {
  UT_DARRAY<char*> a;
  char text[] = "T";
  char* string = text;
  a.a_add(&string);
  a.empty();
  EXPECT_EQ(text[0], 'T');
}

TEST(DynamicArray, OwnElementCanBeAddedWhileTheStorageMoves) {
  array a(1);
  const entry e{1, 42};
  a.a_add(&e);
  for (int i = 0; i < 200; ++i) a.a_sortadd(&a[0], by_key);
  EXPECT_EQ(a.getcount(), 201);
  for (const entry& each : a) EXPECT_EQ(each.order, 42);
}

TEST(DynamicArray, ReservedStorageIsNotMovedByWhatIsAdded) {
  array a(1);
  a.a_reserve(100);
  EXPECT_EQ(a.getcount(), 0);
  const entry e{1, 1};
  a.a_add(&e);
  const entry* first = a.begin();
  for (int i = 1; i < 100; ++i) a.a_add(&e);
  EXPECT_EQ(a.begin(), first);
}

TEST(DynamicArray, AssignmentSharesTheStorage) {
  array a;
  a.getaddr(4)->key = 9;
  array shared;
  shared = a;
  EXPECT_EQ(shared.begin(), a.begin());
  EXPECT_EQ(shared.getcount(), 5);
  const array nothing;
  a = nothing;
  EXPECT_EQ(shared[4].key, 9);
}

TEST(DynamicArray, GrowthBeyondAllMemoryThrowsAndLeavesTheArrayWhole) {
  UT_DARRAY<unsigned char[4096]> big;
  unsigned char page[4096] = {7};
  big.a_add(&page);
  EXPECT_THROW(big.getaddr(INT32_MAX), std::bad_alloc);
  EXPECT_EQ(big.getcount(), 1);
  EXPECT_EQ(big[0][0], 7);
}

TEST(DynamicArray, AMillionSortedInsertionsAtTheEndAreQuick) {
  UT_DARRAY<bx_long> a(1);
  for (bx_long i = 0; i < 1000000; ++i) a.a_sortadd(&i, [](const bx_long& x, const bx_long& y) { return x - y; });
  EXPECT_EQ(a.getcount(), 1000000);
  EXPECT_EQ(a[999999], 999999);
}

class DynamicArrayDeathTest : public testing::Test {
 protected:
  DynamicArrayDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(DynamicArrayDeathTest, CopyConstructionEndsTheProcess) {
  const array a;
  EXPECT_EXIT(const array copy(a), testing::ExitedWithCode(EXIT_FAILURE),
              "^Copy constructor not allowed \\[.+\\] darray:.+ version hdrfile code 1\n$");
}

}  // namespace
