// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Adding and converting, against the plain model of the tree.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "plain_tree.h"

namespace {

using test::modelled_tree;

class TreeModel : public testing::TestWithParam<unsigned> {
 protected:
  std::mt19937 random{GetParam()};

  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random); }

  void grow(modelled_tree& tree, int count, bx_long spread, std::size_t most_places) {
    for (int i = 0; i < count; ++i) {
      const bx_long x = number(-spread, spread);
      const bx_long y = number(-spread, spread);
      const std::size_t place = random() % std::min(tree.places(), most_places);
      tree.add(place, "N" + std::to_string(i), x, y, x + number(-3, 9), y + number(-3, 9));
    }
  }
};

TEST_P(TreeModel, AddingFilesChildrenAsTheModelDoes) {
  for (const bx_long spread : {1, 4, 30}) {
    BX_INSTANCE root("ROOT", 0, 0, 10, 10);
    modelled_tree tree(root);
    grow(tree, 400, spread, 50);
    EXPECT_EQ(tree.difference(), "") << spread;
  }
}

TEST_P(TreeModel, AddingToADatabaseFilesChildrenAsTheModelDoes) {
  BX_DB root("ROOT", 0, 0, 10, 10);
  modelled_tree tree(root);
  grow(tree, 400, 6, 20);
  EXPECT_EQ(tree.difference(), "");
}

TEST_P(TreeModel, ConvertingRegroupsAsTheModelDoes) {
  for (const std::size_t places : {1U, 3U, 1000U}) {
    for (const bx_long spread : {0, 3, 100}) {
      BX_DB root("ROOT", 0, 0, 10, 10);
      modelled_tree tree(root);
      grow(tree, 600, spread, places);
      tree.convert(0);
      EXPECT_EQ(tree.difference(), "") << places << " places, spread " << spread;
    }
  }
}

TEST_P(TreeModel, AddingAfterAConversionOfTheWholeTreeFilesAsTheModelDoes) {
  BX_DB root("ROOT", 0, 0, 10, 10);
  modelled_tree tree(root);
  for (int round = 0; round < 4; ++round) {
    grow(tree, 200, 12, 40);
    tree.convert(0);
  }
  grow(tree, 200, 12, 40);
  EXPECT_EQ(tree.difference(), "");
}

TEST_P(TreeModel, AddingAfterConversionsOfSubtreesFilesAsTheModelDoes) {
  BX_INSTANCE root("ROOT", 0, 0, 10, 10);
  modelled_tree tree(root);
  for (int round = 0; round < 20; ++round) {
    grow(tree, 20, 8, 30);
    tree.convert(random() % std::min<std::size_t>(tree.places(), 30));
  }
  EXPECT_EQ(tree.difference(), "");
}

INSTANTIATE_TEST_SUITE_P(Seeds, TreeModel, testing::Values(11U, 12U, 13U, 14U));

class SortedOrders : public testing::TestWithParam<unsigned> {};

TEST_P(SortedOrders, WiresStayAscendingAndEqualNamesInTheOrderOfInsertion) {
  std::mt19937 random(GetParam());
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  for (int i = 0; i < 1500; ++i) {
    std::string name;
    for (std::size_t length = random() % 3; length > 0; --length)
      name += static_cast<char>("aZ\x7f\x80\xff"[random() % 5]);
    test::add_wire(inst, name.c_str(), i, 0);
  }
  for (bx_long i = 1; i < inst.getnumwires(); ++i) {
    const int order = std::strcmp(inst.wires[i - 1].name, inst.wires[i].name);
    ASSERT_LE(order, 0);
    if (order == 0) {
      ASSERT_LT(inst.wires[i - 1].nodex, inst.wires[i].nodex);
    }
  }
  EXPECT_EQ(inst.getnumwires(), 1500);
}

TEST_P(SortedOrders, ChildrenStayAscendingAndEqualPositionsNewestFirst) {
  std::mt19937 random(GetParam());
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  // One column for all: its own children sit at different lower edges only, those of the root at both.
  for (int i = 0; i < 1500; ++i) {
    const auto x = static_cast<bx_long>(random() % 3);
    const auto y = static_cast<bx_long>(random() % 20) - 10;
    test::add(inst, "C", x, y, x + i, y);
  }
  bx_long seen = 0;
  bx_walk(inst, [&seen](BX_INSTANCE& parent, bx_long) {
    for (bx_long i = 1; i < parent.getnuminstances(); ++i) {
      const BX_INSTANCE& a = *parent.instances[i - 1];
      const BX_INSTANCE& b = *parent.instances[i];
      EXPECT_LE(a.xmin, b.xmin);
      if (a.xmin != b.xmin) continue;
      EXPECT_LE(a.ymin, b.ymin);
      if (a.ymin == b.ymin) {
        EXPECT_GT(a.xmax, b.xmax);
      }
      ++seen;
    }
    return true;
  });
  EXPECT_GT(seen, 1400);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SortedOrders, testing::Values(21U, 22U, 23U));

}  // namespace
