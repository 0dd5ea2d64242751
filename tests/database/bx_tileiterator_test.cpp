// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_tileiterator.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "grid_tiles.h"

namespace {

using test::put_block;

std::string walked(BX_TILEITERATOR iterator) {
  std::string names;
  while (const BX_INSTANCE* inst = iterator.getnext()) names += inst->name;
  return names;
}

void walk_plainly(const BX_INSTANCE& inst, std::vector<const BX_INSTANCE*>& found) {
  for (const BX_INSTANCE* child : inst.instances) {
    if (child == nullptr) continue;
    walk_plainly(*child, found);
    found.push_back(child);
  }
}

class TileIterator : public testing::Test {
 protected:
  // a(a1, a2(x)), b, c(c1)
  TileIterator() {
    BX_INSTANCE* a = put_block(root, "a", 0, 0, 1, 1);
    put_block(*a, "1", 0, 0, 1, 1);
    put_block(*put_block(*a, "2", 0, 0, 1, 1), "x", 0, 0, 1, 1);
    put_block(root, "b", 0, 0, 1, 1);
    put_block(*put_block(root, "c", 0, 0, 1, 1), "3", 0, 0, 1, 1);
  }

  BX_INSTANCE root{"R", 0, 0, 9, 9};
};

TEST_F(TileIterator, GivesDescendantsBeforeTheirParentAndNeverTheRoot) {
  EXPECT_EQ(walked(BX_TILEITERATOR(&root)), "1x2ab3c");
}

TEST_F(TileIterator, OfAnInstanceWithoutChildrenGivesNullAtOnce) {
  BX_INSTANCE leaf("L", 0, 0, 1, 1);
  BX_TILEITERATOR iterator(&leaf);
  EXPECT_EQ(iterator.getnext(), nullptr);
  EXPECT_EQ(iterator.getnext(), nullptr);
  EXPECT_EQ(BX_TILEITERATOR(nullptr).getnext(), nullptr);
}

TEST_F(TileIterator, ThatHasReturnedNullKeepsReturningNull) {
  BX_TILEITERATOR iterator(&root);
  while (iterator.getnext() != nullptr) {
  }
  for (int i = 0; i < 3; ++i) EXPECT_EQ(iterator.getnext(), nullptr);
}

TEST_F(TileIterator, OverAChainOfThreeLevelsGivesTheInnermostFirst) {
  BX_INSTANCE chain("C", 0, 0, 9, 9);
  put_block(*put_block(*put_block(chain, "1", 0, 0, 1, 1), "2", 0, 0, 1, 1), "3", 0, 0, 1, 1);
  EXPECT_EQ(walked(BX_TILEITERATOR(&chain)), "321");
}

TEST_F(TileIterator, PassesOverNullChildren) {
  BX_INSTANCE* none = nullptr;
  root.instances.a_add(&none);
  root.instances[0]->instances.a_add(&none);
  put_block(root, "d", 0, 0, 1, 1);
  EXPECT_EQ(walked(BX_TILEITERATOR(&root)), "1x2ab3cd");
}

TEST_F(TileIterator, CopyInTheMiddleOfASubtreeSharesTheRestOfIt) {
  BX_TILEITERATOR first(&root);
  EXPECT_STREQ(first.getnext()->name, "1");
  BX_TILEITERATOR second(nullptr);
  second = first;
  EXPECT_STREQ(second.getnext()->name, "x");
  EXPECT_STREQ(first.getnext()->name, "2") << "what the copy took is gone";
  EXPECT_EQ(walked(second), "ab3c");
  EXPECT_EQ(walked(first), "ab3c") << "behind the shared subtree each goes its own way";
}

TEST_F(TileIterator, MovedFromCanBeUsedOn) {
  BX_TILEITERATOR first(&root);
  first.getnext();
  BX_TILEITERATOR second(nullptr);
  second = std::move(first);
  EXPECT_EQ(walked(second), "x2ab3c");
  EXPECT_EQ(walked(first), "ab3c");  // NOLINT(bugprone-use-after-move): moving is documented to copy
}

// Leaks and double releases are for the sanitizers to see.
TEST_F(TileIterator, AbandonedAnywhereAndCopiedReleasesWhatIsLeft) {
  for (int steps = 0; steps < 9; ++steps) {
    BX_TILEITERATOR abandoned(&root);
    for (int i = 0; i < steps; ++i) abandoned.getnext();
    BX_TILEITERATOR copy(abandoned);
    BX_TILEITERATOR assigned(&root);
    assigned.getnext();
    assigned = copy;
    EXPECT_EQ(walked(assigned).size() + static_cast<std::size_t>(std::min(steps, 7)), 7U);
  }
}

TEST_F(TileIterator, WalksRandomTreesAsARecursionDoes) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    BX_INSTANCE tree("T", 0, 0, 9, 9);
    std::vector<BX_INSTANCE*> places{&tree};
    const auto size = random() % 60;
    for (unsigned i = 0; i < size; ++i) {
      BX_INSTANCE& parent = *places[random() % places.size()];
      if (random() % 10 == 0) {
        BX_INSTANCE* none = nullptr;
        parent.instances.a_add(&none);
      }
      places.push_back(put_block(parent, "N", 0, 0, 1, 1));
    }
    std::vector<const BX_INSTANCE*> expected;
    walk_plainly(tree, expected);
    std::vector<const BX_INSTANCE*> found;
    BX_TILEITERATOR iterator(&tree);
    while (const BX_INSTANCE* inst = iterator.getnext()) found.push_back(inst);
    ASSERT_EQ(found, expected);
    ASSERT_EQ(found.size(), size);
  }
}

TEST_F(TileIterator, WalksAHundredThousandLevels) {
  BX_INSTANCE tree("T", 0, 0, 9, 9);
  BX_INSTANCE* deepest = &tree;
  for (int i = 0; i < 100000; ++i) deepest = put_block(*deepest, "N", 0, 0, 1, 1);
  BX_TILEITERATOR iterator(&tree);
  EXPECT_EQ(iterator.getnext(), deepest);
  int count = 1;
  while (iterator.getnext() != nullptr) ++count;
  EXPECT_EQ(count, 100000);
}

}  // namespace
