// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Instances of all kinds that clients make are destroyed by the tree that they joined.
#include <gtest/gtest.h>

#include <cstdint>
#include <new>

#include "bx_db.h"

namespace {

int destroyed = 0;

struct client_instance : BX_INSTANCE {
  client_instance() : BX_INSTANCE("CLIENT", 0, 0, 1, 1) {}
  ~client_instance() override { ++destroyed; }
};

struct alignas(64) aligned_instance : client_instance {
  bool is_aligned() const noexcept { return reinterpret_cast<std::uintptr_t>(this) % 64 == 0; }
};

struct failing_instance : client_instance {
  failing_instance() { throw std::bad_alloc(); }
};

TEST(InstanceStorage, OfEveryKindOfNewIsFreedByTheTree) {
  destroyed = 0;
  {
    BX_DB db("TOP", 0, 0, 9, 9);
    db.addinstance(new client_instance);
    db.addinstance(new (std::nothrow) client_instance);
    auto* aligned = new aligned_instance;
    auto* also_aligned = new (std::nothrow) aligned_instance;
    EXPECT_TRUE(aligned->is_aligned());
    EXPECT_TRUE(also_aligned->is_aligned());
    db.addinstance(aligned);
    db.addinstance(also_aligned);
  }
  EXPECT_EQ(destroyed, 4);
}

TEST(InstanceStorage, OfTheClientIsLeftToTheClient) {
  destroyed = 0;
  alignas(client_instance) unsigned char place[sizeof(client_instance)];
  auto* inst = new (place) client_instance;
  EXPECT_EQ(static_cast<void*>(inst), static_cast<void*>(place));
  inst->~client_instance();
  EXPECT_EQ(destroyed, 1);
}

// The leak sanitizer would see what is not given back.
TEST(InstanceStorage, IsGivenBackWhenAConstructorThrows) {
  destroyed = 0;
  EXPECT_THROW(delete new failing_instance, std::bad_alloc);
  EXPECT_THROW(delete new (std::nothrow) failing_instance, std::bad_alloc);
  EXPECT_EQ(destroyed, 2);
}

}  // namespace
