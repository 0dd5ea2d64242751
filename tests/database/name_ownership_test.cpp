// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Who owns a name. Much of this is judged by the address and leak sanitizers: a string freed twice, used
// after it was freed, or never freed ends the test.
#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "exposed.h"
#include "ut_string.h"

namespace {

using test::add;
using test::bind;
using test::intern;

TEST(NameOwnership, OldNameOfAnInstanceThatJoinsADatabaseStaysValidAsLongAsIt) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = test::make("I", 0, 0, 1, 1);
  const char* old = inst->name;
  db.addinstance(inst);
  EXPECT_NE(inst->name, old);
  EXPECT_STREQ(old, "I");
}

TEST(NameOwnership, OldNamesOfAllInstancesOfAJoiningTreeStayValid) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = test::make("I", 0, 0, 1, 1);
  const char* deep = add(*inst, "DEEP", 4, 4, 5, 5)->name;
  const char* column = inst->getinstance(0)->name;
  db.addinstance(inst);
  EXPECT_STREQ(deep, "DEEP");
  EXPECT_STREQ(column, "BXD__DEEP");
}

TEST(NameOwnership, InstanceThatLeavesADatabaseTakesCopiesAndFreesNothingOfIt) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(db, "I", 0, 0, 1, 1);
  test::add_wire(*inst, "W");
  const char* name = inst->name;
  const char* wire_name = inst->getwire(0)->name;
  db.instances[0] = nullptr;
  {
    BX_INSTANCE alone("ALONE", 0, 0, 1, 1);
    alone.addinstance(inst);
    EXPECT_EQ(inst->top, nullptr);
    EXPECT_NE(inst->name, name);
  }
  EXPECT_STREQ(name, "I");
  EXPECT_STREQ(wire_name, "W");
  EXPECT_EQ(intern(db, "I"), name);
}

TEST(NameOwnership, InstanceThatMovesToAnotherDatabaseFreesNothingOfTheFirst) {
  BX_DB first("D", 0, 0, 1, 1);
  {
    BX_DB second("E", 0, 0, 1, 1);
    BX_INSTANCE* inst = add(first, "I", 0, 0, 1, 1);
    test::add_wire(*inst, "W");
    first.instances[0] = nullptr;
    second.addinstance(inst);
    EXPECT_EQ(inst->top, &second);
    EXPECT_EQ(inst->name, intern(second, "I"));
  }
  EXPECT_STREQ(intern(first, "I"), "I");
  EXPECT_STREQ(intern(first, "W"), "W");
}

TEST(NameOwnership, TreeMayLeaveAndJoinAgainAndAgain) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_DB other("E", 0, 0, 1, 1);
  std::mt19937 random(5);
  BX_INSTANCE tree("TREE", 0, 0, 1, 1);
  test::grow_random_tree(tree, random, 60);
  const std::string text = test::text_of(tree);
  BX_DB* const tops[] = {&db, nullptr, &other, &db, nullptr, &db, &other, nullptr};
  for (BX_DB* top : tops) {
    bind(tree, top);
    EXPECT_EQ(test::text_of(tree), text);
  }
}

TEST(NameOwnership, RootNameGivenToTheConstructorStaysValidWhenAClientReplacesIt) {
  BX_DB db("FIRST", 0, 0, 1, 1);
  const char* old = db.name;
  db.name = intern(db, "SECOND");
  EXPECT_STREQ(old, "FIRST");
  EXPECT_STREQ(db.getname(), "SECOND");
}

TEST(NameOwnership, DatabaseMayBeUnboundAndBoundToItselfAgain) {
  BX_DB db("D", 0, 0, 1, 1);
  add(db, "I", 3, 0, 4, 1);
  bind(db, nullptr);
  EXPECT_EQ(db.top, nullptr);
  EXPECT_STREQ(db.getname(), "D");
  bind(db, &db);
  EXPECT_EQ(db.name, intern(db, "D"));
  bind(db, nullptr);
}

TEST(NameOwnership, DatabaseInsideAnotherOneBelongsToIt) {
  BX_DB outer("OUTER", 0, 0, 1, 1);
  auto* inner = new BX_DB("INNER", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(*inner, "I", 5, 5, 6, 6);
  outer.addinstance(inner);
  EXPECT_EQ(inner->top, &outer);
  EXPECT_EQ(inst->top, &outer);
  EXPECT_EQ(inst->name, intern(outer, "I"));
}

TEST(NameOwnership, BorrowedNamesOfAStandaloneInstanceAreNotFreed) {
  char name[] = "N";
  char wire_name[] = "W";
  {
    BX_INSTANCE inst(nullptr, 0, 0, 1, 1);
    inst.name = name;
    inst.nameborrowed = true;
    test::add_wire(inst, nullptr);
    inst.getwire(0)->setname(wire_name);
    inst.getwire(0)->nameborrowed = true;
  }
  EXPECT_STREQ(name, "N");
  EXPECT_STREQ(wire_name, "W");
}

TEST(NameOwnership, BorrowedNamesAreNotFreedWhenTheirInstanceJoins) {
  char name[] = "N";
  char wire_name[] = "W";
  {
    BX_DB db("D", 0, 0, 1, 1);
    BX_INSTANCE* inst = test::make(nullptr, 0, 0, 1, 1);
    inst->name = name;
    inst->nameborrowed = true;
    test::add_wire(*inst, nullptr);
    inst->getwire(0)->setname(wire_name);
    inst->getwire(0)->nameborrowed = true;
    db.addinstance(inst);
    EXPECT_EQ(inst->name, intern(db, "N"));
    EXPECT_EQ(inst->getwire(0)->name, intern(db, "W"));
  }
  EXPECT_STREQ(name, "N");
  EXPECT_STREQ(wire_name, "W");
}

TEST(NameOwnership, PrivateCopyClearsTheFlagSoThatItIsFreed) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE tree("T", 0, 0, 1, 1);
  test::add_wire(tree, "W");
  bind(tree, &db);
  tree.nameborrowed = true;
  tree.getwire(0)->nameborrowed = true;
  bind(tree, nullptr);
  EXPECT_FALSE(tree.nameborrowed);
  EXPECT_FALSE(tree.getwire(0)->nameborrowed);
}

TEST(NameOwnership, WireCopiesTakenFromATreeFreeNothing) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(db, "I", 0, 0, 1, 1);
  BX_INSTANCE alone("A", 0, 0, 1, 1);
  test::add_wire(*inst, "W");
  test::add_wire(alone, "W");
  {
    const BX_WIRE bound = *inst->getwire(0);
    const BX_WIRE free_standing = *alone.getwire(0);
    std::vector<BX_WIRE> several(5, bound);
    several.push_back(free_standing);
    alone.addwire(&bound);
    inst->addwire(&free_standing);
  }
  EXPECT_EQ(test::wire_names(alone), (std::vector<std::string>{"W", "W"}));
  EXPECT_EQ(test::wire_names(*inst), (std::vector<std::string>{"W", "W"}));
}

TEST(NameOwnership, WireCopyOutlivesItsTreeOnlyAsFarAsItsNameIsNotRead) {
  BX_WIRE copy;
  {
    BX_INSTANCE inst("I", 0, 0, 1, 1);
    test::add_wire(inst, "W", 3, 4);
    copy = *inst.getwire(0);
  }
  EXPECT_EQ(copy.getnodex(), 3);
  EXPECT_EQ(copy.getnodey(), 4);
}

TEST(NameOwnership, NewWiresOfAnArrayFreeNothingOnTheirOwn) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  inst.wires.getaddr(3)->name = ut_strdup("MADE IN PLACE");
  const BX_WIRE copy = *inst.getwire(3);
  EXPECT_STREQ(copy.getname(), "MADE IN PLACE");
  EXPECT_EQ(inst.getwire(0)->getnodex(), 2147483647);
}

// ---- names that go by their flags

TEST(NameOwnership, StringOfTheTableThatAJoiningInstanceHasIsFreedOnce) {
  BX_DB db("D", 0, 0, 1, 1);
  char* const known = test::intern(db, "KNOWN");
  for (int i = 0; i < 2; ++i) {
    BX_INSTANCE* inst = test::make(nullptr, 0, 0, 1, 1);
    inst->name = known;
    BX_WIRE wire("W", 0, 0);
    inst->addwire(&wire);
    std::free(inst->wires[0].name);
    inst->wires[0].setname(known);
    db.addinstance(inst);
    EXPECT_EQ(inst->name, known);
    EXPECT_EQ(inst->wires[0].name, known);
  }
  EXPECT_STREQ(known, "KNOWN");
}

TEST(NameOwnership, StringThatTwoJoiningInstancesHaveIsFreedOnce) {
  BX_DB db("D", 0, 0, 1, 1);
  char* const shared = ut_strdup("SHARED");
  for (int i = 0; i < 2; ++i) {
    BX_INSTANCE* inst = test::make(nullptr, 0, 0, 1, 1);
    inst->name = shared;
    db.addinstance(inst);
    EXPECT_NE(inst->name, shared);
  }
  EXPECT_STREQ(shared, "SHARED");
}

TEST(NameOwnership, StringThatAJoiningInstanceAndItsWireHaveIsFreedOnce) {
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = test::make("SHARED", 0, 0, 1, 1);
  char* const shared = inst->name;
  test::add_wire(*inst, "W");
  std::free(inst->wires[0].name);
  inst->wires[0].setname(shared);
  db.addinstance(inst);
  EXPECT_EQ(inst->wires[0].name, inst->name);
  EXPECT_STREQ(shared, "SHARED");
}

TEST(NameOwnership, TwinTextsOfATableAreFreedOnceThoughAnInstanceJoinsWithTheSecond) {
  BX_DB db("D", 0, 0, 1, 1);
  for (int i = 0; i < 2; ++i) {
    char* const twin = ut_strdup("TWIN");
    db.names.a_add(&twin);
  }
  BX_INSTANCE* inst = test::make(nullptr, 0, 0, 1, 1);
  inst->name = db.names[1];
  db.addinstance(inst);
  EXPECT_EQ(inst->name, db.names[0]);
}

TEST(NamesByFlag, ClearFlagsFreePrivateNamesOfInstancesInADatabase) {
  const test::flow on(1);
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(db, "I", 0, 0, 1, 1);
  test::add_wire(*inst, "W");
  inst->name = ut_strdup("PRIVATE");
  inst->getwire(0)->setname(ut_strdup("PRIVATE WIRE"));
}

TEST(NamesByFlag, StringsOfTheTableAreNotFreedTwice) {
  const test::flow on(1);
  BX_DB db("D", 0, 0, 1, 1);
  std::mt19937 random(6);
  test::grow_random_tree(db, random, 100);
  delete db.instances[0];
  db.instances[0] = nullptr;
  for (char* string : db.names) EXPECT_EQ(intern(db, string), string);
}

TEST(NamesByFlag, SetFlagsLeaveNamesAlone) {
  char name[] = "N";
  char wire_name[] = "W";
  {
    const test::flow on(1);
    BX_DB db("D", 0, 0, 1, 1);
    for (BX_INSTANCE* parent : {static_cast<BX_INSTANCE*>(&db), new BX_INSTANCE("ALONE", 0, 0, 1, 1)}) {
      BX_INSTANCE* inst = add(*parent, "I", 0, 0, 1, 1);
      test::add_wire(*inst, "V");
      if (inst->top == nullptr) {
        std::free(inst->name);
        std::free(inst->getwire(0)->name);
      }
      inst->name = name;
      inst->nameborrowed = true;
      inst->getwire(0)->setname(wire_name);
      inst->getwire(0)->nameborrowed = true;
      if (parent != &db) delete parent;
    }
  }
  EXPECT_STREQ(name, "N");
  EXPECT_STREQ(wire_name, "W");
}

TEST(NamesByFlag, StringSharedWithinATreeIsFreedOnce) {
  const test::flow on(1);
  char* shared = ut_strdup("SHARED");
  BX_INSTANCE root(nullptr, 0, 0, 1, 1);
  BX_INSTANCE* child = add(root, nullptr, 0, 0, 1, 1);
  BX_INSTANCE* grandchild = add(*child, nullptr, 0, 0, 1, 1);
  test::add_wires(*child, {nullptr, nullptr});
  root.name = child->name = grandchild->name = shared;
  child->getwire(0)->setname(shared);
  child->getwire(1)->setname(shared);
}

TEST(NamesByFlag, StringSharedBetweenASetAndAClearFlagIsFreedOnce) {
  const test::flow on(1);
  char* shared = ut_strdup("SHARED");
  BX_DB db(nullptr, 0, 0, 1, 1);
  BX_INSTANCE* lender = add(db, nullptr, 0, 0, 1, 1);
  BX_INSTANCE* borrower = add(db, nullptr, 0, 1, 1, 1);
  lender->name = borrower->name = shared;
  borrower->nameborrowed = true;
}

TEST(NamesByFlag, NamesThatTheDatabaseKeepsAreNotFreedTwice) {
  const test::flow on(1);
  BX_DB db("D", 0, 0, 1, 1);
  BX_INSTANCE* inst = test::make("I", 0, 0, 1, 1);
  char* kept = inst->name;
  db.addinstance(inst);
  inst->name = kept;
  BX_INSTANCE* other = add(db, "J", 0, 0, 1, 1);
  other->name = db.name;
  test::add_wire(*other, nullptr);
  other->getwire(0)->setname(kept);
}

TEST(NamesByFlag, SwitchedOnAndOffBetweenTreesFreesEveryNameOnce) {
  BX_DB db("D", 0, 0, 1, 1);
  for (const bx_long value : {1, 0, -1, 0}) {
    const test::flow set(value);
    std::mt19937 random(7);
    BX_INSTANCE alone("ALONE", 0, 0, 1, 1);
    test::grow_random_tree(alone, random, 30);
    auto* joined = new BX_INSTANCE("JOINED", 0, 0, 1, 1);
    test::grow_random_tree(*joined, random, 30);
    db.addinstance(joined);
  }
  EXPECT_EQ(BX_DB::MPAR_FLOW, 0);
}

}  // namespace
