// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <random>
#include <set>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t object_size = 104;

// More than two pieces.
constexpr std::size_t many = 50000;

std::vector<unsigned char*> taken(UT_POOL& pool, std::size_t count) {
  std::vector<unsigned char*> objects;
  for (std::size_t i = 0; i < count; ++i) {
    objects.push_back(static_cast<unsigned char*>(pool.take()));
    EXPECT_NE(objects.back(), nullptr);
  }
  return objects;
}

void give_back(const std::vector<unsigned char*>& objects) {
  for (unsigned char* object : objects) UT_POOL::give_back(object);
}

TEST(Pool, GivesPlacesThatAreNobodyElses) {
  UT_POOL pool(object_size);
  const std::vector<unsigned char*> objects = taken(pool, many);
  for (std::size_t i = 0; i < many; ++i) {
    ASSERT_TRUE(UT_POOL::holds(objects[i]));
    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(objects[i]) % 8, 0U);
    ASSERT_EQ(std::count(objects[i], objects[i] + object_size, 0), static_cast<std::ptrdiff_t>(object_size));
    std::memset(objects[i], static_cast<int>(i % 251), object_size);
  }
  for (std::size_t i = 0; i < many; ++i) {
    ASSERT_EQ(std::count(objects[i], objects[i] + object_size, i % 251), static_cast<std::ptrdiff_t>(object_size));
  }
  give_back(objects);
}

TEST(Pool, DoesNotHoldWhatIsNotItsOwn) {
  const auto heap = std::make_unique<int>(0);
  const int stack = 0;
  static int fixed = 0;
  for (const void* other :
       {static_cast<const void*>(heap.get()), static_cast<const void*>(&stack), static_cast<const void*>(&fixed),
        static_cast<const void*>(nullptr), reinterpret_cast<const void*>(UINTPTR_MAX)}) {
    EXPECT_FALSE(UT_POOL::holds(other));
  }
}

TEST(Pool, WhatObjectsNeedLivesAsLongAsAnyOfThem) {
  auto needed = std::make_shared<int>(7);
  const std::weak_ptr<int> watched = needed;
  std::vector<unsigned char*> objects;
  {
    UT_POOL pool(object_size, std::move(needed));
    objects = taken(pool, many);
  }
  std::shuffle(objects.begin(), objects.end(), std::mt19937(2));
  unsigned char* const last = objects.back();
  objects.pop_back();
  give_back(objects);
  EXPECT_FALSE(watched.expired());
  UT_POOL::give_back(last);
  EXPECT_TRUE(watched.expired());
}

TEST(Pool, MayGoBeforeItsObjects) {
  std::vector<unsigned char*> objects;
  {
    UT_POOL pool(object_size);
    objects = taken(pool, many);
  }
  std::shuffle(objects.begin(), objects.end(), std::mt19937(1));
  std::set<std::uintptr_t> pieces;
  for (std::size_t i = 0; i < many; ++i) {
    objects[i][object_size - 1] = 1;
    pieces.insert(reinterpret_cast<std::uintptr_t>(objects[i]) >> 21);
  }
  EXPECT_GE(pieces.size(), 3U);
  give_back(objects);
  // The pieces are gone now, all of them.
  for (unsigned char* object : objects) ASSERT_FALSE(UT_POOL::holds(object));
}

TEST(Pool, KeepsAPieceWhileItHasOneObject) {
  UT_POOL pool(object_size);
  std::vector<unsigned char*> objects = taken(pool, 100);
  unsigned char* last = objects[50];
  objects.erase(objects.begin() + 50);
  give_back(objects);
  // Places are still taken from it, too.
  unsigned char* next = taken(pool, 1)[0];
  EXPECT_TRUE(UT_POOL::holds(last));
  last[0] = 1;
  UT_POOL::give_back(last);
  next[0] = 1;
  UT_POOL::give_back(next);
}

TEST(Pool, TakesObjectsBackFromManyThreads) {
  std::vector<unsigned char*> objects;
  {
    UT_POOL pool(object_size);
    objects = taken(pool, many);
  }
  std::shuffle(objects.begin(), objects.end(), std::mt19937(2));
  std::vector<std::thread> threads;
  for (std::size_t part = 0; part < 4; ++part) {
    threads.emplace_back([&objects, part] {
      for (std::size_t i = part; i < many; i += 4) UT_POOL::give_back(objects[i]);
    });
  }
  for (std::thread& each : threads) each.join();
  for (unsigned char* object : objects) ASSERT_FALSE(UT_POOL::holds(object));
}

#if defined(__SANITIZE_ADDRESS__)
TEST(PoolDeathTest, ReportsUseBeyondAnObjectAndOfOneThatWasGivenBack) {
  UT_POOL pool(object_size);
  const std::vector<unsigned char*> objects = taken(pool, 2);
  EXPECT_DEATH(objects[0][object_size] = 1, "use-after-poison");
  UT_POOL::give_back(objects[0]);
  EXPECT_DEATH(objects[0][0] = 1, "use-after-poison");
  UT_POOL::give_back(objects[1]);
}
#endif

}  // namespace
