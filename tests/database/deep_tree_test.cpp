// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees of a depth that no recursion survives.
#include <gtest/gtest.h>

#include "exposed.h"
#include "qelmoext.h"

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

TEST(DeepTree, IsSearchedWithPathsOfBoundedLength) {
  constexpr bx_long levels = 20000;
  BX_INSTANCE root("ROOT", 0, 0, 1, 1);
  BX_INSTANCE* last = &root;
  for (bx_long i = 1; i <= levels; ++i) last = test::add(*last, "LEVEL", 0, 0, 1, 1);
  test::add_wire(*last, "W");
  const auto instances = qelmodb::find_instances(root, "LEVEL");
  ASSERT_EQ(instances.size(), static_cast<std::size_t>(levels));
  EXPECT_EQ(instances[0].path, "ROOT/LEVEL");
  const std::string& deepest = instances.back().path;
  EXPECT_EQ(deepest.substr(0, 14), "ROOT/.../LEVEL");
  EXPECT_EQ(deepest.substr(deepest.size() - 6), "/LEVEL");
  for (const auto& found : instances) ASSERT_LE(found.path.size(), 410U);
  EXPECT_EQ(qelmodb::find_wires(root, "W").at(0).path, deepest);
  EXPECT_EQ(qelmodb::instances_at(root, 0, 0).back().path, deepest);
  EXPECT_EQ(qelmodb::path_of(root, *last).size(), 4 + 6 * static_cast<std::size_t>(levels));
}

TEST(DeepTree, PathIsCutFromFourHundredCharactersOn) {
  BX_INSTANCE root("R", 0, 0, 1, 1);
  BX_INSTANCE* inner = test::add(root, std::string(398, 'n').c_str(), 0, 0, 1, 1);
  test::add(*inner, "X", 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::find_instances(root, inner->name).at(0).path, std::string("R/") + inner->name);
  EXPECT_EQ(qelmodb::find_instances(root, "X").at(0).path, "R/.../X");
  BX_INSTANCE long_root(std::string(400, 'r').c_str(), 0, 0, 1, 1);
  test::add(long_root, "X", 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::find_instances(long_root, "X").at(0).path, std::string(400, 'r') + "/X");
  BX_INSTANCE* last = test::add(long_root, std::string(500, 'l').c_str(), 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::find_instances(long_root, last->name).at(0).path,
            std::string(400, 'r') + "/" + std::string(400, 'l'));
}

}  // namespace
