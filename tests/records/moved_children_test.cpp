// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Adding to instances of very many children, some of which were moved or taken out meanwhile: a new instance goes to
// the first child with its left edge, as a look at every child says.
#include <gtest/gtest.h>

#include <random>

#include "../database/exposed.h"
#include "record_bytes.h"

namespace {

using test::number;

class MovedChildren : public testing::TestWithParam<unsigned> {
 protected:
  static constexpr bx_long count = 400;
  static constexpr bx_long spread = 1000;

  MovedChildren() {
    for (bx_long i = 0; i < count; ++i) {
      BX_INSTANCE* child = test::make("C", 2 * i, 0, 2 * i + 1, 1);
      parent_.instances.a_add(&child);
    }
    qelmodb::child_order_changed();
    add_anywhere();
  }

  bx_long pick(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }

  BX_INSTANCE*& any_child() { return parent_.instances[pick(0, parent_.getnuminstances() - 1)]; }

  // A leaf, so that a record can be read into it.
  BX_INSTANCE* any_leaf() {
    for (;;) {
      BX_INSTANCE* child = any_child();
      if (child != nullptr && child->getnuminstances() == 0) return child;
    }
  }

  // Reads a record that has another left edge.
  void read_elsewhere(BX_INSTANCE& inst) {
    const bx_long x = pick(0, spread);
    const test::box at{x, 0, x + 1, 1};
    const std::string edges = "(" + std::to_string(x) + ", 0) (" + std::to_string(x + 1) + ", 1)";
    UT_STREAM& text = *memory("BX_INSTANCE: \"T\" " + edges + "\n0\n" + "0\n");
    switch (pick(0, 4)) {
      case 0:
        EXPECT_EQ(inst.readme(&text), 1);
        break;
      case 1:
        EXPECT_EQ(inst.readme(memory(test::instance_bytes(0, at))), 1);
        inst.name = ut_strdup("B");
        inst.nameborrowed = false;
        break;
      case 2:
        EXPECT_EQ(inst.readgrid(&text), 1);
        break;
      case 3:
        EXPECT_EQ(inst.readgrid(memory(test::grid_bytes("G", at))), 1);
        break;
      default:
        EXPECT_EQ(inst.readcompress(memory(test::box_bytes(at) + std::string(2, '\0') + number(0))), 1);
        break;
    }
    EXPECT_EQ(inst.xmin, x);
  }

  // Gives an instance the edges of another one, and all else with them.
  void assign_elsewhere(BX_INSTANCE& inst) {
    const bx_long x = pick(0, spread);
    alignas(BX_INSTANCE) unsigned char room[sizeof(BX_INSTANCE)];
    std::free(inst.name);
    inst = *new (room) BX_INSTANCE("A", x, 0, x + 1, 1);  // which is not destroyed: both hold the name
  }

  // What the definition says: attached to the parent, filed under a child, or under a new column.
  BX_INSTANCE* expected_owner(bx_long x) {
    if (x == parent_.xmin) return &parent_;
    for (BX_INSTANCE* child : parent_.instances) {
      if (child == nullptr) return &parent_;
      if (child->xmin == x) return child;
    }
    return nullptr;
  }

  void add_anywhere() {
    const bx_long x = pick(0, spread);
    BX_INSTANCE* const owner = expected_owner(x);
    const bx_long before = owner != nullptr ? owner->getnuminstances() : parent_.getnuminstances();
    BX_INSTANCE* const inst = test::make("N", x, 5, x, 6);
    parent_.addinstance(inst);
    if (owner != nullptr) {
      EXPECT_EQ(owner->getnuminstances(), before + 1) << x;
      EXPECT_NE(std::find(owner->instances.begin(), owner->instances.end(), inst), owner->instances.end()) << x;
    } else {
      EXPECT_EQ(parent_.getnuminstances(), before + 1) << x;
      EXPECT_EQ(std::find(parent_.instances.begin(), parent_.instances.end(), inst), parent_.instances.end()) << x;
    }
  }

  UT_MEMFILE* memory(std::string bytes) {
    file_ = std::make_unique<UT_MEMFILE>(std::move(bytes));
    return file_.get();
  }

  BX_INSTANCE parent_{"P", -1, 0, 2000, 10};
  std::mt19937 random_{GetParam()};
  std::unique_ptr<UT_MEMFILE> file_;
};

TEST_P(MovedChildren, ByRecordsAreFoundWhereTheyAre) {
  for (int round = 0; round < 300; ++round) {
    read_elsewhere(*any_leaf());
    for (int i = 0; i < 3; ++i) add_anywhere();
  }
}

TEST_P(MovedChildren, ByAssignmentAreFoundWhereTheyAre) {
  for (int round = 0; round < 300; ++round) {
    assign_elsewhere(*any_leaf());
    for (int i = 0; i < 3; ++i) add_anywhere();
  }
}

TEST_P(MovedChildren, ByHandAreFoundOnceTheLibraryWasTold) {
  for (int round = 0; round < 300; ++round) {
    any_leaf()->xmin = pick(0, spread);
    qelmodb::child_order_changed();
    for (int i = 0; i < 3; ++i) add_anywhere();
  }
}

TEST_P(MovedChildren, ThatWereTakenOutLeaveAPlaceThatEndsTheSearch) {
  for (int round = 0; round < 50; ++round) {
    BX_INSTANCE*& taken = any_child();
    BX_INSTANCE* const held = taken;
    taken = nullptr;
    for (int i = 0; i < 5; ++i) add_anywhere();
    // Adding to the parent itself may have moved its places.
    *std::find(parent_.instances.begin(), parent_.instances.end(), nullptr) = held;
    qelmodb::child_order_changed();
    for (int i = 0; i < 5; ++i) add_anywhere();
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MovedChildren, testing::Range(1U, 5U));

}  // namespace
