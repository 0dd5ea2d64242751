// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Wires that were loaded share storage of their database. What clients do with them must not show that.
#include <gtest/gtest.h>

#include "../database/exposed.h"
#include "qelmocompress.h"
#include "record_bytes.h"

namespace {

using test::content;
using test::form;

class LoadedStorage : public testing::TestWithParam<form> {
 protected:
  LoadedStorage() {
    BX_DB db("TOP", 0, 0, 99, 99);
    for (int i = 0; i < 50; ++i) {
      BX_INSTANCE* tile = test::add(db, "TILE", 0, 10 * i, 9, 10 * i + 9);
      for (int k = 0; k < i; ++k) test::add_wire(*tile, ("W" + std::to_string(k)).c_str(), k, i);
    }
    for (int k = 0; k < 3; ++k) test::add(*db.getinstance(nested_), "INNER", 0, 10 * nested_ + k, 9, 10 * nested_ + k);
    qelmodb::intern_root_name(db);
    db.compress();
    bytes_ = test::dumped(db, GetParam());
    text_ = test::text_of(db);
  }

  std::unique_ptr<BX_DB> load() const {
    auto db = std::make_unique<BX_DB>();
    EXPECT_TRUE(test::loaded(*db, bytes_));
    EXPECT_EQ(test::text_of(*db), text_);
    return db;
  }

  /// Takes child i out of the tree.
  static BX_INSTANCE* take_out(BX_DB& db, bx_long i) {
    BX_INSTANCE* child = db.instances[i];
    db.instances[i] = nullptr;
    return child;
  }

  /// The tile that has children.
  static constexpr bx_long nested_ = 30;

  std::string bytes_;
  std::string text_;
};

TEST_P(LoadedStorage, GrowsLikeAnyOther) {
  const std::unique_ptr<BX_DB> db = load();
  BX_INSTANCE& tile = *db->getinstance(20);
  const std::string before = test::text_of(*db->getinstance(21));
  for (int i = 0; i < 100; ++i) test::add_wire(tile, "X", i, i);
  EXPECT_EQ(tile.getnumwires(), 120);
  EXPECT_STREQ(tile.wires[0].name, "W0");
  EXPECT_EQ(tile.wires[119].nodex, 99);
  EXPECT_EQ(test::text_of(*db->getinstance(21)), before) << "the neighbour in storage";
}

TEST_P(LoadedStorage, CanBeEmptiedAndFilledAgain) {
  const std::unique_ptr<BX_DB> db = load();
  BX_INSTANCE& tile = *db->getinstance(20);
  tile.wires.empty();
  test::add_wire(tile, "X", 1, 2);
  ASSERT_EQ(tile.getnumwires(), 1);
  EXPECT_STREQ(tile.wires[0].name, "X");
}

TEST_P(LoadedStorage, IsLeftWhenAnInstanceJoinsAnotherDatabase) {
  BX_DB other("OTHER", 0, 0, 9, 9);
  std::string before;
  {
    const std::unique_ptr<BX_DB> db = load();
    before = test::text_of(*db->getinstance(20));
    other.addinstance(take_out(*db, 20));
  }
  EXPECT_EQ(test::text_of(*other.getinstance(0)), before);
}

TEST_P(LoadedStorage, IsLeftWhenAnInstanceLeavesAllDatabases) {
  BX_INSTANCE alone("ALONE", 0, 0, 9, 9);
  std::string before;
  {
    const std::unique_ptr<BX_DB> db = load();
    before = test::text_of(*db->getinstance(20));
    alone.addinstance(take_out(*db, 20));
  }
  EXPECT_EQ(test::text_of(*alone.getinstance(0)), before);
}

// Nothing of what leaves a database goes with it.
TEST_P(LoadedStorage, OfATreeIsLeftWhenItJoinsAnotherDatabase) {
  BX_DB other("OTHER", 0, 0, 9, 9);
  std::string before;
  {
    const std::unique_ptr<BX_DB> db = load();
    before = test::text_of(*db->getinstance(nested_));
    other.addinstance(take_out(*db, nested_));
  }
  EXPECT_EQ(test::text_of(*other.getinstance(0)), before);
  BX_INSTANCE& joined = *other.getinstance(0);
  test::add(joined, "NEW", joined.xmin, joined.ymin, joined.xmax, joined.ymax);
  EXPECT_EQ(joined.getnuminstances(), 4);
}

TEST_P(LoadedStorage, OfListsLivesAsLongAsAnyInstanceOfTheLoad) {
  std::unique_ptr<BX_DB> db = load();
  std::unique_ptr<BX_INSTANCE> nested(take_out(*db, nested_));
  std::unique_ptr<BX_INSTANCE> leaf(take_out(*db, 20));
  // The names were the database's. All else is the instances' own.
  db.reset();
  ASSERT_EQ(nested->getnuminstances(), 3);
  for (const BX_INSTANCE* child : nested->instances) EXPECT_EQ(child->xmax, 9);
  ASSERT_EQ(nested->getnumwires(), nested_);
  for (bx_long k = 0; k < nested_; ++k) EXPECT_EQ(nested->wires[k].nodey, nested_);
  nested.reset();
  ASSERT_EQ(leaf->getnumwires(), 20);
  for (bx_long k = 0; k < 20; ++k) EXPECT_EQ(leaf->wires[k].nodey, 20);
}

TEST_P(LoadedStorage, OfInstancesIsGivenBackOneByOne) {
  const std::unique_ptr<BX_DB> db = load();
  for (const bx_long i : {20, 7, 49, 0, nested_}) delete take_out(*db, i);
  db->instances[20] = new BX_INSTANCE("BY HAND", 0, 0, 1, 1);
  ASSERT_TRUE(test::loaded(*db, bytes_));
  EXPECT_EQ(test::text_of(*db), text_);
}

TEST_P(LoadedStorage, IsReplacedByTheNextLoad) {
  const std::unique_ptr<BX_DB> db = load();
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(test::loaded(*db, bytes_));
    EXPECT_EQ(test::text_of(*db), text_);
  }
}

// A line that has no end does not end the process.
TEST_P(LoadedStorage, OfAFileThatIsCutOffIsReleased) {
  const std::size_t step = GetParam() == form::text ? 1 : 101;
  int tried = 0;
  for (std::size_t length = 200; length < bytes_.size(); length += step) {
    if (GetParam() == form::text && (bytes_[length] != '\n' || bytes_[length - 1] != ')')) continue;
    ++tried;
    BX_DB db;
    EXPECT_FALSE(test::loaded(db, bytes_.substr(0, length))) << length;
  }
  EXPECT_GT(tried, 5);
}

INSTANTIATE_TEST_SUITE_P(Forms, LoadedStorage, testing::Values(form::text, form::binary, form::compressed),
                         [](const auto& tested) { return std::string(qelmodb::to_string(tested.param)); });

}  // namespace
