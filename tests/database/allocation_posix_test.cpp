// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What must not allocate: lookups, and naming what is named already.
#include <gtest/gtest.h>

#include <memory>

#include "exposed.h"
#include "failing_memory.h"

namespace {

using test::add;

template <class Action>
long allocations_of(Action action) {
  const test::allocation_watch watch;
  action();
  return test::allocation_watch::made();
}

class Allocation : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_GT(allocations_of([] { test::intern(*std::make_unique<BX_DB>(), "A"); }), 0) << "the count must count";
  }
};

TEST_F(Allocation, LookupsNeverAllocate) {
  BX_DB db("D", 0, 0, 1, 1);
  for (bx_long i = 0; i < 100; ++i) {
    BX_INSTANCE* inst = add(db, ("I" + std::to_string(i)).c_str(), i / 10, i, i + 5, i + 9);
    for (int w = 0; w < 10; ++w) test::add_wire(*inst, ("W" + std::to_string(w) + "$1").c_str());
  }
  BX_INSTANCE* child = db.getinstance(0);
  const std::string long_name(50000, 'x');
  const long count = allocations_of([&] {
    for (bx_long x = -5; x < 120; ++x) {
      db.getwire(x, x, "W5$1");
      db.getwire_tr(x, x, "W5");
      db.getwire(x, x, "MISSING");
      db.getinstanceid(x, x, -1);
      db.getinstance(x, x, child);
      child->getwireid("W3$1", -1);
      child->getwireid_tr("W3", 0);
      child->getwire("W3$1", nullptr);
      child->getwire_tr(long_name.c_str(), child->getwire(0));
      db.getinstanceid("I5", -1);
      db.getinstance("I5", child);
    }
  });
  EXPECT_EQ(count, 0);
}

TEST_F(Allocation, PositionalLookupAllocatesNothingUpTo256NestedInstances) {
  BX_INSTANCE root("R", 0, 0, 9, 9);
  BX_INSTANCE* last = &root;
  for (int i = 1; i < 256; ++i) last = add(*last, "I", 0, 0, 9, 9);
  test::add_wire(*last, "W");
  BX_WIRE* found = nullptr;
  EXPECT_EQ(allocations_of([&] { found = root.getwire(5, 5, "W"); }), 0);
  EXPECT_EQ(found, last->getwire(0));
}

TEST_F(Allocation, InterningAKnownTextAllocatesNothing) {
  BX_DB db;
  char* first = test::intern(db, "NAME");
  char* second = nullptr;
  EXPECT_EQ(allocations_of([&] { second = test::intern(db, "NAME"); }), 0);
  EXPECT_EQ(second, first);
}

TEST_F(Allocation, BindingABoundTreeOnceMoreAllocatesNothing) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(db, "I", 0, 0, 1, 1);
  test::add_wire(*inst, "W");
  EXPECT_EQ(allocations_of([&] { test::bind(*inst, &db); }), 0);
  EXPECT_EQ(allocations_of([&] { test::bind(db, &db); }), 0);
}

TEST_F(Allocation, ReadingNamesAndSizesAllocatesNothing) {
  BX_DB db("D", 0, 0, 1, 1);
  add(db, "I", 0, 0, 1, 1);
  bx_long sum = 0;
  EXPECT_EQ(allocations_of([&] {
              sum = db.getnuminstances() + db.getnumwires() + db.getinstance(0)->tmpltidx();
              sum += db.getname()[0];
            }),
            0);
  EXPECT_EQ(sum, 1 + 'D');
}

}  // namespace
