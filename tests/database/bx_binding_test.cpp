// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <set>

#include "exposed.h"

namespace {

using test::add;
using test::bind;
using test::intern;

// A name of a tree, and where it stands.
std::vector<const char*> all_names(const BX_INSTANCE& root) {
  std::vector<const char*> names;
  bx_walk(root, [&names](const BX_INSTANCE& inst, bx_long) {
    names.push_back(inst.name);
    for (const BX_WIRE& wire : inst.wires) names.push_back(wire.name);
    return true;
  });
  return names;
}

void expect_top(const BX_INSTANCE& root, const BX_DB* db) {
  bx_walk(root, [db](const BX_INSTANCE& inst, bx_long) {
    EXPECT_EQ(inst.top, db) << inst.name;
    return true;
  });
}

// TREE with a wire, two children of one name, one grandchild.
void build(BX_INSTANCE& tree) {
  test::add_wires(tree, {"W", "V"});
  BX_INSTANCE* a = add(tree, "C", 0, 0, 1, 1);
  add(tree, "C", 0, 1, 1, 1);
  test::add_wire(*a, "W");
  add(*a, "G", 5, 5, 6, 6);
}

TEST(Binding, StandaloneTreeBoundToADatabaseSharesOnePointerPerName) {
  BX_DB db;
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  build(tree);
  ASSERT_NE(tree.getinstance(0)->name, tree.getinstance(1)->name);
  bind(tree, &db);
  expect_top(tree, &db);
  EXPECT_EQ(tree.getinstance(0)->name, tree.getinstance(1)->name);
  EXPECT_EQ(tree.getwire("W", nullptr)->name, tree.getinstance(0)->getwire(0)->name);
  for (const char* name : all_names(tree)) EXPECT_EQ(intern(db, name), name);
}

TEST(Binding, BoundOnceMoreToTheSameDatabaseChangesNothing) {
  BX_DB db;
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  build(tree);
  bind(tree, &db);
  const std::vector<const char*> names = all_names(tree);
  const bx_long table = db.names.getcount();
  bind(tree, &db);
  EXPECT_EQ(all_names(tree), names);
  EXPECT_EQ(db.names.getcount(), table);
}

TEST(Binding, SubtreeThatBelongsToTheDatabaseAlreadyIsNotVisited) {
  BX_DB db;
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  BX_INSTANCE* child = add(tree, "CHILD", 0, 0, 1, 1);
  BX_INSTANCE* grandchild = add(*child, "GRANDCHILD", 0, 0, 1, 1);
  bind(*child, &db);
  bind(*grandchild, nullptr);
  bind(tree, &db);
  EXPECT_EQ(tree.top, &db);
  EXPECT_EQ(grandchild->top, nullptr);
}

TEST(Binding, BoundToNullGivesEveryNameAPrivateCopy) {
  BX_DB db;
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  build(tree);
  bind(tree, &db);
  const std::string text = test::text_of(tree);
  bind(tree, nullptr);
  expect_top(tree, nullptr);
  EXPECT_EQ(test::text_of(tree), text);
  const std::vector<const char*> names = all_names(tree);
  EXPECT_EQ(std::set<const char*>(names.begin(), names.end()).size(), names.size());
  for (const char* name : names) EXPECT_NE(intern(db, name), name);
}

TEST(Binding, NullIsBoundToNullWithoutEffect) {
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  build(tree);
  const std::vector<const char*> names = all_names(tree);
  bind(tree, nullptr);
  EXPECT_EQ(all_names(tree), names);
}

TEST(Binding, TreeMovesBetweenDatabases) {
  BX_DB from;
  BX_DB to;
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  build(tree);
  const std::string text = test::text_of(tree);
  bind(tree, &from);
  const std::vector<const char*> old = all_names(tree);
  bind(tree, &to);
  expect_top(tree, &to);
  EXPECT_EQ(test::text_of(tree), text);
  for (const char* name : all_names(tree)) EXPECT_EQ(intern(to, name), name);
  for (const char* name : old) EXPECT_EQ(intern(from, name), name) << "the old database keeps its strings";
}

TEST(Binding, TreeMayOutliveNoDatabaseItLeft) {
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  {
    BX_DB db;
    build(tree);
    bind(tree, &db);
    bind(tree, nullptr);
  }
  EXPECT_STREQ(tree.getname(), "TREE");
  EXPECT_STREQ(tree.getinstance(0)->getwire(0)->getname(), "W");
}

TEST(Binding, NullNamesAndNullChildrenAreLeftAsTheyAre) {
  BX_DB db;
  BX_INSTANCE tree(nullptr, 0, 0, 1, 1);
  test::add_wire(tree, nullptr);
  *tree.instances.getaddr(2) = nullptr;
  bind(tree, &db);
  EXPECT_EQ(tree.name, nullptr);
  EXPECT_EQ(tree.getwire(0)->name, nullptr);
  EXPECT_EQ(tree.top, &db);
  EXPECT_EQ(db.names.getcount(), 0);
  bind(tree, nullptr);
  EXPECT_EQ(tree.top, nullptr);
}

TEST(Binding, AddinstanceBindsTheWholeSubtree) {
  BX_DB db("DB", 0, 0, 1, 1);
  BX_INSTANCE* tree = test::make("TREE", 3, 0, 4, 1);
  build(*tree);
  db.addinstance(tree);
  expect_top(db, &db);
  for (const char* name : all_names(*tree)) EXPECT_EQ(intern(db, name), name);
}

TEST(Binding, AddinstanceToAStandaloneParentUnbindsTheWholeSubtree) {
  BX_DB db;
  BX_INSTANCE* tree = test::make("TREE", 0, 0, 1, 1);
  build(*tree);
  bind(*tree, &db);
  BX_INSTANCE parent("PARENT", 0, 0, 1, 1);
  parent.addinstance(tree);
  expect_top(parent, nullptr);
  for (const char* name : all_names(*tree)) EXPECT_NE(intern(db, name), name);
}

TEST(Binding, ManyNamesBoundAtOnceLeaveTheTableSorted) {
  BX_DB db;
  intern(db, "N500");
  intern(db, "ZZZ");
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  for (int i = 999; i >= 0; --i) {
    test::add_wire(tree, ("N" + std::to_string(i)).c_str());
    add(tree, ("M" + std::to_string(i % 100)).c_str(), 0, 0, 1, 1);
  }
  bind(tree, &db);
  EXPECT_EQ(db.names.getcount(), 1000 + 100 + 2);
  for (bx_long i = 1; i < db.names.getcount(); ++i) EXPECT_LT(std::string(db.names[i - 1]), db.names[i]);
}

}  // namespace
