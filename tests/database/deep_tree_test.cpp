// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees of a depth that no recursion survives.
#include <gtest/gtest.h>

#include "exposed.h"

namespace {

constexpr bx_long levels = 100000;

// A chain below root, one child each; returns the last.
BX_INSTANCE* grow_chain(BX_INSTANCE& root) {
  BX_INSTANCE* last = &root;
  for (bx_long i = 0; i < levels; ++i) {
    auto* inst = new BX_INSTANCE("LEVEL", 0, 0, 9, 9);
    last->addinstance(inst);
    last = inst;
  }
  return last;
}

bx_long depth_of(const BX_INSTANCE& root) {
  bx_long deepest = 0;
  bx_walk(root, [&deepest](const BX_INSTANCE&, bx_long depth) {
    deepest = std::max(deepest, depth);
    return true;
  });
  return deepest;
}

TEST(DeepTree, IsBuiltWalkedAndDestroyed) {
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  grow_chain(root);
  EXPECT_EQ(depth_of(root), levels);
}

TEST(DeepTree, IsLookedThroughByPosition) {
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  BX_INSTANCE* last = grow_chain(root);
  test::add_wire(*last, "W$1");
  EXPECT_EQ(root.getwire(5, 5, "W$1"), last->getwire(0));
  EXPECT_EQ(root.getwire_tr(5, 5, "W$2"), last->getwire(0));
  EXPECT_EQ(root.getwire(5, 5, "V"), nullptr);
}

TEST(DeepTree, IsBoundToADatabaseAndOutOfIt) {
  BX_DB db;
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  BX_INSTANCE* last = grow_chain(root);
  test::bind(root, &db);
  EXPECT_EQ(last->top, &db);
  EXPECT_EQ(last->name, root.getinstance(0)->name);
  test::bind(root, nullptr);
  EXPECT_EQ(last->top, nullptr);
  EXPECT_NE(last->name, root.getinstance(0)->name);
}

TEST(DeepTree, IsConverted) {
  BX_DB db("DB", 0, 0, 9, 9);
  BX_INSTANCE* last = grow_chain(db);
  test::add(*last, "FAR", 0, -50, 70, 60);
  db.convert_hierarchy();
  EXPECT_EQ(test::rectangle(db), "0 70 -50 60");
}

TEST(DeepTree, IsDestroyedWhileNamesGoByTheirFlags) {
  const test::flow on(1);
  BX_INSTANCE root("ROOT", 0, 0, 9, 9);
  BX_INSTANCE* last = grow_chain(root);
  test::add_wire(*last, "W");
}

}  // namespace
