// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "plain_tree.h"

namespace {

using test::add;
using test::child_names;
using names = std::vector<std::string>;

// An instance P at 0 0 with children at its own left edge, one above the other.
void stack_children(BX_INSTANCE& inst, bx_long count) {
  for (bx_long i = 0; i < count; ++i) add(inst, ("C" + std::to_string(i)).c_str(), 0, i, 1, i);
}

std::vector<bx_long> group_sizes(const BX_INSTANCE& inst) {
  std::vector<bx_long> sizes;
  for (const BX_INSTANCE* group : inst.instances) sizes.push_back(group->getnuminstances());
  return sizes;
}

using sizes = std::vector<bx_long>;

TEST(Hierarchy, FortyChildrenStayAsTheyAre) {
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  stack_children(inst, 40);
  const names before = child_names(inst);
  inst.convert_hierarchy();
  EXPECT_EQ(child_names(inst), before);
  EXPECT_EQ(inst.getnuminstances(), 40);
}

TEST(Hierarchy, FewChildrenThatStickOutStillWidenTheirParent) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "A", -5, -6, -4, -3);
  add(inst, "B", 20, 30, 40, 50);
  ASSERT_EQ(test::rectangle(inst), "0 10 0 10");
  inst.convert_hierarchy();
  EXPECT_EQ(test::rectangle(inst), "-5 40 -6 50");
  EXPECT_EQ(child_names(inst), (names{"BXD__A", "BXD__B"}));
}

TEST(Hierarchy, FortyOneChildrenMakeSixGroups) {
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  stack_children(inst, 41);
  inst.convert_hierarchy();
  EXPECT_EQ(child_names(inst), (names{"BXD0000_P", "BXD0001_P", "BXD0002_P", "BXD0003_P", "BXD0004_P", "BXD0005_P"}));
  EXPECT_EQ(group_sizes(inst), (sizes{7, 7, 7, 7, 7, 6}));
  EXPECT_EQ(child_names(*inst.getinstance(1)), (names{"C7", "C8", "C9", "C10", "C11", "C12", "C13"}));
  EXPECT_EQ(test::rectangle(*inst.getinstance(1)), "0 1 7 13");
}

TEST(Hierarchy, GroupsGrowWithTheSquareRootOfTheNumberOfChildren) {
  const auto sizes_of = [](bx_long count) {
    BX_INSTANCE inst("P", 0, 0, 1, 1);
    stack_children(inst, count);
    inst.convert_hierarchy();
    return group_sizes(inst);
  };
  EXPECT_EQ(sizes_of(49), (sizes{7, 7, 7, 7, 7, 7, 7}));
  EXPECT_EQ(sizes_of(50), (sizes{8, 8, 8, 8, 8, 8, 2}));
  EXPECT_EQ(sizes_of(64), (sizes{8, 8, 8, 8, 8, 8, 8, 8}));
  EXPECT_EQ(sizes_of(65), (sizes{9, 9, 9, 9, 9, 9, 9, 2}));
}

TEST(Hierarchy, GroupsAtOtherLeftEdgesComeUnderColumns) {
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  for (bx_long x = 1; x <= 41; ++x) add(inst, ("C" + std::to_string(x)).c_str(), x, 0, x, 0);
  inst.convert_hierarchy();
  EXPECT_EQ(child_names(inst), (names{"BXD__BXD0000_P", "BXD__BXD0001_P", "BXD__BXD0002_P", "BXD__BXD0003_P",
                                      "BXD__BXD0004_P", "BXD__BXD0005_P"}));
  const BX_INSTANCE* group = inst.getinstance(0)->getinstance(0);
  EXPECT_STREQ(group->getname(), "BXD0000_P");
  EXPECT_EQ(test::rectangle(*group), "1 7 0 0");
  EXPECT_EQ(test::rectangle(inst), "0 41 0 1");
}

TEST(Hierarchy, EachCountBetweenTheGroupSizesIsConvertedAsTheModelDoes) {
  for (const int count : {1, 39, 40, 41, 42, 48, 49, 50, 63, 64, 65, 81, 82, 1680, 1681, 1682}) {
    for (const bx_long step : {0, 1}) {
      BX_DB db("TOP", 0, 0, 1, 1);
      test::modelled_tree tree(db);
      for (bx_long i = 0; i < count; ++i) tree.add(0, "C" + std::to_string(i), i * step, i, i * step + 2, i + 2);
      tree.convert(0);
      EXPECT_EQ(tree.difference(), "") << count << " children, step " << step;
    }
  }
}

TEST(Hierarchy, GroupsOfADatabaseBelongToItAndHaveItsNames) {
  BX_DB db("TOP", 0, 0, 1, 1);
  stack_children(db, 41);
  db.convert_hierarchy();
  bx_walk(db, [&db](BX_INSTANCE& inst, bx_long depth) {
    EXPECT_EQ(inst.top, &db);
    if (depth > 0) {
      EXPECT_EQ(test::intern(db, inst.name), inst.name);
    }
    return true;
  });
  EXPECT_STREQ(db.getinstance(3)->getname(), "BXD0003_TOP");
}

TEST(Hierarchy, ParentWithoutNameGivesItsGroupsNoEnding) {
  BX_INSTANCE inst(nullptr, 0, 0, 1, 1);
  stack_children(inst, 41);
  inst.convert_hierarchy();
  EXPECT_STREQ(inst.getinstance(5)->getname(), "BXD0005_");
}

TEST(Hierarchy, LongParentNameIsKeptWholeInTheGroupNames) {
  const std::string text(5000, 'n');
  BX_INSTANCE inst(text.c_str(), 0, 0, 1, 1);
  stack_children(inst, 41);
  inst.convert_hierarchy();
  EXPECT_EQ(inst.getinstance(0)->getname(), "BXD0000_" + text);
}

TEST(Hierarchy, InstancesAndWiresThemselvesStay) {
  BX_DB db("TOP", 0, 0, 1, 1);
  std::vector<BX_INSTANCE*> children;
  for (bx_long i = 0; i < 60; ++i) {
    children.push_back(add(db, "C", 0, i, 1, i));
    test::add_wire(*children.back(), "W", i, i);
  }
  std::vector<const BX_WIRE*> wires;
  for (const BX_INSTANCE* child : children) wires.push_back(child->getwire(0));
  db.convert_hierarchy();
  std::vector<BX_INSTANCE*> found;
  for (const BX_INSTANCE* group : db.instances)
    found.insert(found.end(), group->instances.begin(), group->instances.end());
  EXPECT_EQ(found, children);
  for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i]->getwire(0), wires[i]);
}

TEST(Hierarchy, ChildOutsideItsParentWidensAllInstancesAbove) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  BX_INSTANCE* child = add(inst, "C", 0, 0, 5, 5);
  add(*child, "FAR", -70, -80, 90, 100);
  inst.convert_hierarchy();
  EXPECT_EQ(test::rectangle(*child), "-70 90 -80 100");
  EXPECT_EQ(test::rectangle(inst), "-70 90 -80 100");
}

TEST(Hierarchy, RectanglesAreNeverShrunk) {
  BX_INSTANCE inst("P", 0, 0, 100, 100);
  add(inst, "C", 0, 0, 5, 5);
  inst.convert_hierarchy();
  EXPECT_EQ(test::rectangle(inst), "0 100 0 100");
}

TEST(Hierarchy, OnlyTheSubtreeOfTheInstanceIsConverted) {
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  BX_INSTANCE* child = add(inst, "C", 0, 0, 1, 1);
  BX_INSTANCE* other = add(inst, "O", 0, 1, 1, 1);
  stack_children(*child, 41);
  stack_children(*other, 41);
  child->convert_hierarchy();
  EXPECT_EQ(child->getnuminstances(), 6);
  EXPECT_EQ(other->getnuminstances(), 41);
  EXPECT_EQ(test::rectangle(inst), "0 1 0 1");
}

TEST(Hierarchy, NullChildrenAreSkippedAndDoNotCount) {
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  stack_children(inst, 40);
  *inst.instances.getaddr(44) = nullptr;
  inst.convert_hierarchy();
  EXPECT_EQ(inst.getnuminstances(), 45);
  BX_INSTANCE grouped("Q", 0, 0, 1, 1);
  stack_children(grouped, 41);
  *grouped.instances.getaddr(44) = nullptr;
  grouped.convert_hierarchy();
  EXPECT_EQ(group_sizes(grouped), (sizes{7, 7, 7, 7, 7, 6}));
}

TEST(Hierarchy, AMillionChildrenAreConvertedAsTheModelDoes) {
  constexpr bx_long million = 1000000;
  BX_INSTANCE inst("P", 0, 0, 1, 1);
  test::plain_node model("P", 0, 0, 1, 1);
  for (bx_long i = 0; i < million; ++i) {
    add(inst, "C", 0, i, 1, i);
    model.add(std::make_unique<test::plain_node>("C", 0, i, 1, i));
  }
  ASSERT_EQ(inst.getnuminstances(), million);
  inst.convert_hierarchy();
  model.convert();
  EXPECT_EQ(test::difference(model, inst), "");
}

}  // namespace
