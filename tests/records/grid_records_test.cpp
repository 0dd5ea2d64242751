// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees without wires, as binary and text records on streams.
#include <gtest/gtest.h>

#include <csignal>

#include "record_bytes.h"

namespace {

using test::grid_bytes;

std::string binary_of(const BX_INSTANCE& inst) {
  UT_MEMFILE file;
  EXPECT_EQ(inst.writegrid(&file), 1);
  return file.bytes();
}

std::string text_of(const BX_INSTANCE& inst) {
  UT_MEMFILE file;
  EXPECT_EQ(inst.writegrid(static_cast<UT_STREAM*>(&file)), 1);
  return file.bytes();
}

unsigned char read_text(BX_INSTANCE& inst, const std::string& text) {
  UT_MEMFILE file{std::string(text)};
  return inst.readgrid(static_cast<UT_STREAM*>(&file));
}

unsigned char read_binary(BX_INSTANCE& inst, const std::string& bytes) {
  UT_MEMFILE file{std::string(bytes)};
  return inst.readgrid(&file);
}

void fill_wired(BX_INSTANCE& root) {
  const BX_WIRE wire("W", 1, 2);
  root.addwire(&wire);
  auto* child = new BX_INSTANCE("CHILD", 0, 7, 4, 9);
  child->addwire(&wire);
  root.addinstance(child);
}

TEST(BinaryGridRecord, OfALeafWithANameOfOneCharacterTakes22Bytes) {
  const std::string bytes = binary_of(BX_INSTANCE("T", 1, 2, 3, 4));
  EXPECT_EQ(bytes.size(), 22U);
  EXPECT_EQ(bytes, grid_bytes("T", {1, 2, 3, 4}));
}

TEST(BinaryGridRecord, SpellsNamesOutAndHoldsNoWires) {
  BX_INSTANCE root("R", 0, 0, 10, 20);
  fill_wired(root);
  EXPECT_EQ(binary_of(root), grid_bytes("R", {0, 0, 10, 20}, {grid_bytes("CHILD", {0, 7, 4, 9})}));
}

TEST(TextGridRecord, HoldsNoWires) {
  BX_INSTANCE root("R", 0, 0, 10, 20);
  fill_wired(root);
  EXPECT_EQ(text_of(root), "BX_INSTANCE: \"R\" (0, 0) (10, 20)\n1\nBX_INSTANCE: \"CHILD\" (0, 7) (4, 9)\n0\n");
}

TEST(BinaryGridRecord, ReadsPrivateNames) {
  BX_INSTANCE root("OLD", 0, 0, 0, 0);
  ASSERT_EQ(read_binary(root, grid_bytes("R$1", {0, 0, 10, 20}, {grid_bytes("", {0, 7, 4, 9})})), 1);
  EXPECT_STREQ(root.name, "R$1");
  EXPECT_FALSE(root.nameborrowed);
  ASSERT_EQ(root.getnuminstances(), 1);
  EXPECT_STREQ(root.getinstance(0)->name, "");
  EXPECT_FALSE(root.getinstance(0)->nameborrowed);
  EXPECT_EQ(root.getinstance(0)->ymax, 9);
}

TEST(BinaryGridRecord, ReadUnderADatabaseSetsTopAndTheDatabaseKeepsTheNames) {
  BX_DB db;
  ASSERT_EQ(read_binary(db, grid_bytes("R", {0, 0, 10, 20}, {grid_bytes("C", {0, 7, 4, 9})})), 1);
  EXPECT_EQ(db.getinstance(0)->top, &db);
  EXPECT_EQ(db.names.getcount(), 0);
}

TEST(BinaryGridRecord, HoldsANameOf254CharactersAndNotOneMore) {
  const std::string longest(254, 'n');
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_binary(root, grid_bytes(longest, {0, 0, 1, 1})), 1);
  EXPECT_EQ(root.name, longest);
  BX_INSTANCE refused(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_binary(refused, grid_bytes(longest + "n", {0, 0, 1, 1})), 0);
}

void read_text_and_leave(const std::string& text) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  read_text(root, text);
  test::leave_process(0);
}

TEST(GridRecordsDeathTest, ANameOf200CharactersSurvivesTheBinaryFormButAbortsATextRead) {
  const BX_INSTANCE root(std::string(200, 'n').c_str(), 0, 0, 1, 1);
  BX_INSTANCE again(nullptr, 0, 0, 0, 0);
  ASSERT_EQ(read_binary(again, binary_of(root)), 1);
  EXPECT_STREQ(again.name, root.name);
  EXPECT_EXIT(read_text_and_leave(text_of(root)), test::ended_by_fast_fail, "^$");
}

TEST(BinaryGridRecord, GivesFalseWhenTheNameOrTheRectangleIsCutOff) {
  const std::string whole = grid_bytes("NAME", {1, 2, 3, 4});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    BX_INSTANCE root(nullptr, 0, 0, 0, 0);
    EXPECT_EQ(read_binary(root, whole.substr(0, length)), length < 21 ? 0 : 1) << length;
  }
}

TEST(BinaryGridRecord, StopsAtTheFirstFailedChildAndKeepsWhatItRead) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_binary(root, test::stored("R") + test::box_bytes({0, 0, 9, 9}) + test::number(3) +
                                  grid_bytes("C", {5, 6, 7, 8}) + "cut"),
            0);
  ASSERT_GE(root.getnuminstances(), 1);
  EXPECT_STREQ(root.getinstance(0)->name, "C");
}

TEST(GridRecords, TakeNegativeAndMalformedCountsForNone) {
  BX_INSTANCE binary(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_binary(binary, test::stored("R") + test::box_bytes({0, 0, 9, 9}) + test::number(-3)), 1);
  EXPECT_EQ(binary.getnuminstances(), 0);
  BX_INSTANCE text(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_text(text, "BX_INSTANCE: \"R\" (0, 0) (9, 9)\nx\n"), 1);
  EXPECT_EQ(text.getnuminstances(), 0);
}

TEST(TextGridRecord, ReadUnderADatabaseBindsChildrenToIt) {
  test::opened_db db;
  ASSERT_EQ(read_text(db,
                      "BX_INSTANCE: \"R\" (0, 0) (9, 9)\n2\nBX_INSTANCE: \"C\" (0, 1) (2, 3)\n0\n"
                      "BX_INSTANCE: \"C\" (0, 4) (2, 6)\n0\n"),
            1);
  EXPECT_EQ(db.getinstance(0)->top, &db);
  EXPECT_EQ(db.getinstance(0)->name, db.getinstance(1)->name);
  EXPECT_EQ(db.getinstance(0)->name, db.getcachedname("C"));
}

TEST(TextGridRecord, GivesFalseWhenTheHeaderHasNoLineEnd) {
  BX_INSTANCE root(nullptr, 0, 0, 0, 0);
  EXPECT_EQ(read_text(root, "BX_INSTANCE: \"R\" (0, 0) (9, 9)"), 0);
}

}  // namespace
