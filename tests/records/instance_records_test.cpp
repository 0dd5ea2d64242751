// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Instances with their wires and children, as binary and text records on streams.
#include <gtest/gtest.h>

#include <csignal>

#include "record_bytes.h"

namespace {

using test::address_of;
using test::instance_bytes;
using test::wire_bytes;

std::string binary_of(const BX_INSTANCE& inst) {
  UT_MEMFILE file;
  EXPECT_EQ(inst.writeme(&file), 1);
  return file.bytes();
}

unsigned char read_text(BX_INSTANCE& inst, const std::string& text) {
  UT_MEMFILE file{std::string(text)};
  return inst.readme(static_cast<UT_STREAM*>(&file));
}

void add_wire(BX_INSTANCE& inst, const char* name, bx_long x, bx_long y) {
  const BX_WIRE wire(name, x, y);
  inst.addwire(&wire);
}

TEST(BinaryInstanceRecord, OfALeafWithoutWiresTakes32Bytes) {
  const BX_INSTANCE leaf("T1", 1, 2, 3, 4);
  const std::string bytes = binary_of(leaf);
  EXPECT_EQ(bytes.size(), 32U);
  EXPECT_EQ(bytes, instance_bytes(address_of(leaf.name), {1, 2, 3, 4}));
}

TEST(BinaryInstanceRecord, HoldsTheInstanceItsWiresAndThenEachChildWhole) {
  BX_INSTANCE root("R", 0, 0, 10, 20);
  add_wire(root, "B", 5, -6);
  add_wire(root, "A", 1, 2);
  auto* child = new BX_INSTANCE("C", 0, 7, 4, 9);
  add_wire(*child, "W", 8, 9);
  root.addinstance(child);
  root.addinstance(new BX_INSTANCE("D", 0, 1, 4, 3));
  ASSERT_STREQ(root.getinstance(0)->name, "D");
  EXPECT_EQ(binary_of(root), instance_bytes(address_of(root.name), {0, 0, 10, 20},
                                            {wire_bytes(address_of(root.getwire(0)->name), 1, 2),
                                             wire_bytes(address_of(root.getwire(1)->name), 5, -6)},
                                            {instance_bytes(address_of(root.getinstance(0)->name), {0, 1, 4, 3}),
                                             instance_bytes(address_of(child->name), {0, 7, 4, 9},
                                                            {wire_bytes(address_of(child->getwire(0)->name), 8, 9)})}));
}

TEST(BinaryInstanceRecord, ReadsBorrowedNamesAndTheWholeSubtree) {
  const test::separator keep('$');
  char names[3][2] = {"R", "C", "W"};
  UT_MEMFILE file(instance_bytes(1, {0, 0, 10, 20}, {wire_bytes(3, 5, -6)},
                                 {instance_bytes(2, {0, 7, 4, 9}, {wire_bytes(3, 8, 9), wire_bytes(0, 1, 1)})}));
  for (int i = 0; i < 3; ++i) file.fixtable().setnewaddr(static_cast<std::uint64_t>(i) + 1, names[i]);
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(root.readme(&file), 1);
  EXPECT_EQ(root.name, names[0]);
  EXPECT_TRUE(root.nameborrowed);
  EXPECT_EQ(root.top, nullptr);
  ASSERT_EQ(root.getnumwires(), 1);
  EXPECT_EQ(root.getwire(0)->name, names[2]);
  EXPECT_TRUE(root.getwire(0)->nameborrowed);
  ASSERT_EQ(root.getnuminstances(), 1);
  const BX_INSTANCE& child = *root.getinstance(0);
  EXPECT_EQ(child.name, names[1]);
  EXPECT_TRUE(child.nameborrowed);
  EXPECT_EQ(child.getwire(0)->name, names[2]);
  EXPECT_EQ(child.getwire(1)->name, nullptr);
  EXPECT_EQ(test::text_of(root),
            "BX_INSTANCE: \"R\" (0, 0) (10, 20)\n1\nBX_WIRE:  \"W\" (5, -6)\n1\n"
            "BX_INSTANCE: \"C\" (0, 7) (4, 9)\n2\nBX_WIRE:  \"W\" (8, 9)\nBX_WIRE:  \"\" (1, 1)\n0\n");
}

TEST(BinaryInstanceRecord, TakesNegativeCountsForNone) {
  UT_MEMFILE file(test::reference(0) + test::box_bytes({1, 2, 3, 4}) + test::number(-1) + test::number(-2147483647));
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(root.readme(&file), 1);
  EXPECT_EQ(root.getnumwires(), 0);
  EXPECT_EQ(root.getnuminstances(), 0);
}

TEST(BinaryInstanceRecord, CountsThatAreCutOffReadAsNone) {
  const std::string whole = instance_bytes(0, {1, 2, 3, 4});
  for (std::size_t length = 24; length < 32; ++length) {
    UT_MEMFILE file(whole.substr(0, length));
    BX_INSTANCE root(nullptr, 0, 0, 0, 0);
    EXPECT_EQ(root.readme(&file), 1) << length;
    EXPECT_FALSE(file.ok()) << length;
  }
}

TEST(BinaryInstanceRecord, GivesFalseWhenTheRectangleIsCutOff) {
  const std::string whole = instance_bytes(0, {1, 2, 3, 4});
  for (std::size_t length = 0; length < 24; ++length) {
    UT_MEMFILE file(whole.substr(0, length));
    BX_INSTANCE root(nullptr, 0, 0, 0, 0);
    EXPECT_EQ(root.readme(&file), 0) << length;
  }
}

TEST(BinaryInstanceRecord, StopsAtTheFirstFailedWireOrChildAndKeepsWhatItRead) {
  UT_MEMFILE wires(test::reference(0) + test::box_bytes({1, 2, 3, 4}) + test::number(3) + wire_bytes(0, 5, 6) +
                   wire_bytes(0, 7, 8).substr(0, 11));
  BX_INSTANCE a(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(a.readme(&wires), 0);
  ASSERT_GE(a.getnumwires(), 1);
  EXPECT_EQ(a.getwire(0)->nodey, 6);

  UT_MEMFILE children(test::reference(0) + test::box_bytes({1, 2, 3, 4}) + test::number(0) + test::number(3) +
                      instance_bytes(0, {5, 6, 7, 8}) + "cut off");
  BX_INSTANCE b(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(b.readme(&children), 0);
  ASSERT_GE(b.getnuminstances(), 1);
  EXPECT_EQ(b.getinstance(0)->ymax, 8);
}

TEST(BinaryInstanceRecord, LeavesOutMissingChildrenAndDoesNotCountThem) {
  BX_INSTANCE root("R", 0, 0, 9, 9);
  root.addinstance(new BX_INSTANCE("A", 0, 1, 2, 3));
  root.addinstance(new BX_INSTANCE("B", 0, 4, 2, 6));
  delete root.instances[0];
  root.instances[0] = nullptr;
  EXPECT_EQ(binary_of(root), instance_bytes(address_of(root.name), {0, 0, 9, 9}, {},
                                            {instance_bytes(address_of(root.instances[1]->name), {0, 4, 2, 6})}));
}

TEST(TextInstanceRecord, OfALeafWithOneWireIsFourLines) {
  BX_INSTANCE leaf("T1", 0, 0, 4, 2);
  add_wire(leaf, "A", 1, 1);
  EXPECT_EQ(test::text_of(leaf), "BX_INSTANCE: \"T1\" (0, 0) (4, 2)\n1\nBX_WIRE:  \"A\" (1, 1)\n0\n");
}

TEST(TextInstanceRecord, HeaderLineEndsWithASingleLineFeed) {
  const std::string text = test::text_of(BX_INSTANCE("T1", -1, -2, 3, 4));
  EXPECT_EQ(text, "BX_INSTANCE: \"T1\" (-1, -2) (3, 4)\n0\n0\n");
  EXPECT_EQ(text.find('\r'), std::string::npos);
}

TEST(TextInstanceRecord, ReadsItsOwnTextBackAloneWithPrivateNames) {
  const test::separator keep('$');
  const std::string text =
      "BX_INSTANCE: \"R\" (0, 0) (10, 20)\n1\nBX_WIRE:  \"W$1\" (5, -6)\n2\n"
      "BX_INSTANCE: \"C\" (0, 7) (4, 9)\n0\n1\nBX_INSTANCE: \"W$1\" (0, 8) (1, 9)\n0\n0\n"
      "BX_INSTANCE: \"C\" (0, 7) (4, 9)\n0\n0\n";
  BX_INSTANCE root("OLD", 0, 0, 0, 0);
  ASSERT_EQ(read_text(root, text), 1);
  EXPECT_EQ(test::text_of(root), text);
  EXPECT_EQ(root.getinstance(0)->top, nullptr);
  EXPECT_NE(root.getinstance(0)->name, root.getinstance(1)->name);
  EXPECT_FALSE(root.nameborrowed);
}

TEST(TextInstanceRecord, ReadUnderADatabaseBindsChildrenToIt) {
  const test::separator keep('$');
  test::opened_db db;
  ASSERT_EQ(read_text(db,
                      "BX_INSTANCE: \"R\" (0, 0) (9, 9)\n0\n1\nBX_INSTANCE: \"C\" (0, 7) (4, 9)\n1\n"
                      "BX_WIRE:  \"C\" (1, 2)\n1\nBX_INSTANCE: \"R\" (0, 7) (4, 9)\n0\n0\n"),
            1);
  const BX_INSTANCE& child = *db.getinstance(0);
  EXPECT_EQ(child.top, &db);
  EXPECT_EQ(child.getinstance(0)->top, &db);
  EXPECT_EQ(child.name, child.getwire(0)->name);
  EXPECT_EQ(child.name, db.getcachedname("C"));
  EXPECT_EQ(child.getinstance(0)->name, db.getcachedname("R"));
}

TEST(TextInstanceRecord, PassesTheSeparatorToWiresButNotToInstances) {
  const std::string text = "BX_INSTANCE: \"R$1\" (0, 0) (9, 9)\n1\nBX_WIRE:  \"W$1$2\" (1, 2)\n0\n";
  BX_INSTANCE cut(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_text(cut, text), 1);
  EXPECT_STREQ(cut.name, "R$1");
  EXPECT_STREQ(cut.getwire(0)->name, "W");
  const test::separator slash('/');
  BX_INSTANCE slashed(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_text(slashed, text), 1);
  EXPECT_STREQ(slashed.name, "R$1");
  EXPECT_STREQ(slashed.getwire(0)->name, "W/1$2");
}

TEST(TextInstanceRecord, TakesMalformedAndNegativeCountsForNone) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_text(root, "BX_INSTANCE: \"R\" (0, 0) (9, 9)\nmany\n-5\n"), 1);
  EXPECT_EQ(root.getnumwires(), 0);
  EXPECT_EQ(root.getnuminstances(), 0);
}

TEST(TextInstanceRecord, AcceptsCarriageReturnsBeforeLineEnds) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_text(root, "BX_INSTANCE: \"R\" (0, 0) (9, 9)\r\n1\r\nBX_WIRE:  \"W\" (1, 2)\r\n0\r\n"), 1);
  EXPECT_EQ(test::text_of(root), "BX_INSTANCE: \"R\" (0, 0) (9, 9)\n1\nBX_WIRE:  \"W\" (1, 2)\n0\n");
}

TEST(TextInstanceRecord, GivesFalseWhenTheHeaderOrAWireHasNoLineEnd) {
  BX_INSTANCE header(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_text(header, "BX_INSTANCE: \"R\" (0, 0) (9, 9)"), 0);
  BX_INSTANCE wire(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_text(wire, "BX_INSTANCE: \"R\" (0, 0) (9, 9)\n2\nBX_WIRE:  \"W\" (1, 2)"), 0);
  EXPECT_STREQ(wire.getwire(0)->name, "W");
}

void read_and_leave(const std::string& text) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  read_text(root, text);
  test::leave_process(0);
}

TEST(TextInstanceRecordDeathTest, ANameOfAHundredCharactersAbortsTheProcess) {
  BX_INSTANCE longest(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_text(longest, "BX_INSTANCE: \"" + std::string(99, 'n') + "\" (0, 0) (9, 9)\n0\n0\n"), 1);
  EXPECT_EXIT(read_and_leave("BX_INSTANCE: \"" + std::string(100, 'n') + "\" (0, 0) (9, 9)\n0\n0\n"),
              test::ended_by_fast_fail, "^$");
}

TEST(TextInstanceRecordDeathTest, AMissingChildAbortsTheProcess) {
  EXPECT_EXIT(read_and_leave("BX_INSTANCE: \"R\" (0, 0) (9, 9)\n0\n1\n"), test::ended_by_fast_fail, "^$");
}

TEST(TextInstanceRecordDeathTest, AMissingRectangleAbortsTheProcess) {
  EXPECT_EXIT(read_and_leave("BX_INSTANCE: \"R\" (0, 0)"), test::ended_by_fast_fail, "^$");
}

TEST(InstanceRecords, OfAHundredThousandLevelsNeedNoStack) {
  BX_INSTANCE root("N", 0, 0, 1, 1);
  BX_INSTANCE* deepest = &root;
  for (int i = 0; i < 100000; ++i) {
    auto* child = new BX_INSTANCE("N", 0, 0, 1, 1);
    deepest->addinstance(child);
    deepest = child;
  }
  const std::string text = test::text_of(root);
  BX_INSTANCE again(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_text(again, text), 1);
  EXPECT_TRUE(qelmodb::same_tree(root, again, test::content::database));
  UT_MEMFILE written;
  ASSERT_EQ(root.writeme(&written), 1);
  EXPECT_EQ(written.bytes().size(), 100001U * 32);
}

/// A standalone instance reads four records, one after the other, of which each gives it another name.
void read_four_records(BX_INSTANCE& inst, std::vector<const char*>& held) {
  static char borrowed[] = "BINARY";
  UT_MEMFILE text("BX_INSTANCE: \"TEXT\" (0, 0) (1, 1)\n0\n0\n");
  UT_MEMFILE grid_text("BX_INSTANCE: \"GRID TEXT\" (0, 0) (1, 1)\n0\n");
  UT_MEMFILE grid(test::grid_bytes("GRID", {0, 0, 1, 1}));
  UT_MEMFILE binary(test::instance_bytes(5, {0, 0, 1, 1}));
  binary.fixtable().setnewaddr(5, borrowed);
  const auto held_then = [&](unsigned char good) {
    EXPECT_EQ(good, 1);
    held.push_back(inst.getname());
  };
  held.push_back(inst.getname());
  held_then(inst.readme(static_cast<UT_STREAM*>(&text)));
  held_then(inst.readgrid(static_cast<UT_STREAM*>(&grid_text)));
  held_then(inst.readgrid(&grid));
  held_then(inst.readme(&binary));
}

TEST(InstanceRecord, FormerNamesOfAStandaloneInstanceStayValidAsLongAsIt) {
  const std::vector<std::string> expected{"FIRST", "TEXT", "GRID TEXT", "GRID", "BINARY"};
  std::vector<const char*> held;
  {
    BX_INSTANCE alone("FIRST", 0, 0, 1, 1);
    read_four_records(alone, held);
    EXPECT_EQ(std::vector<std::string>(held.begin(), held.end()), expected);
  }
  // In a database, too, which the instance joins and leaves with its parent.
  BX_DB db("D", 0, 0, 1, 1);
  held.clear();
  auto* joining = new BX_INSTANCE("FIRST", 0, 0, 1, 1);
  read_four_records(*joining, held);
  db.addinstance(joining);
  EXPECT_EQ(std::vector<std::string>(held.begin(), held.end()), expected);
}

TEST(InstanceRecord, FormerNamesOfADatabaseStayValidWhenItLoads) {
  BX_DB db;
  // A text grid leaves the root without database, so that it owns its name.
  ASSERT_TRUE(test::loaded(db, "BX_DB:A\nBX_INSTANCE: \"FIRST\" (0, 0) (1, 1)\n0\n", test::content::grid));
  std::vector<const char*> held;
  read_four_records(db, held);
  ASSERT_TRUE(test::loaded(db, "BX_DB:A\nBX_INSTANCE: \"SECOND\" (0, 0) (1, 1)\n0\n0\n"));
  held.pop_back();
  EXPECT_EQ(std::vector<std::string>(held.begin(), held.end()),
            (std::vector<std::string>{"FIRST", "TEXT", "GRID TEXT", "GRID"}));
}

TEST(InstanceRecord, AssignmentLeavesFormerNamesWhereTheyAre) {
  std::vector<const char*> held;
  auto alone = std::make_unique<BX_INSTANCE>("FIRST", 0, 0, 1, 1);
  read_four_records(*alone, held);
  alignas(BX_INSTANCE) unsigned char room[sizeof(BX_INSTANCE)];
  auto* other = new (room) BX_INSTANCE(nullptr, 0, 0, 1, 1);  // never destroyed: it shares all with the first
  *other = *alone;
  EXPECT_STREQ(other->getname(), "BINARY");
  EXPECT_STREQ(held[0], "FIRST");
  alone.reset();
}

}  // namespace
