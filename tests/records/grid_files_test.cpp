// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Grid files by name.
#include <gtest/gtest.h>

#include "record_bytes.h"

namespace {

using test::binary_line;
using test::content;
using test::form;
using test::grid_bytes;

const std::string small_text =
    "BX_DB:A\nBX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n1\nBX_INSTANCE: \"C$1\" (0, 3) (4, 5)\n0\n";
const std::string small_binary = binary_line + grid_bytes("TOP", {0, 0, 9, 9}, {grid_bytes("C$1", {0, 3, 4, 5})});

class GridFiles : public testing::Test {
 protected:
  GridFiles() : small_("TOP", 0, 0, 9, 9) {
    const BX_WIRE wire("W", 1, 2);
    small_.addwire(&wire);
    small_.addinstance(new BX_INSTANCE("C$1", 0, 3, 4, 5));
  }

  std::string put(const std::string& bytes) const {
    test::write_file(folder_.file("in.bxg"), bytes);
    return folder_.file("in.bxg");
  }

  test::temporary_folder folder_;
  BX_DB small_;
};

TEST_F(GridFiles, TextIsTheFirstLineAndTheRootsRecordWithoutWires) {
  ASSERT_EQ(small_.dumpgrid(folder_.file("out.bxg").c_str(), true), 1);
  EXPECT_EQ(test::read_file(folder_.file("out.bxg")), small_text);
}

TEST_F(GridFiles, BinaryIsTheFirstLineAndTheRootsRecordWithoutNameTable) {
  ASSERT_EQ(small_.dumpgrid(folder_.file("out.bxg").c_str(), false), 1);
  EXPECT_EQ(test::read_file(folder_.file("out.bxg")), small_binary);
}

TEST_F(GridFiles, BothFormsLoadByName) {
  for (const std::string& bytes : {small_text, small_binary}) {
    BX_DB db;
    ASSERT_EQ(db.loadgrid(put(bytes).c_str()), 1);
    EXPECT_TRUE(qelmodb::same_tree(db, small_, content::grid));
    EXPECT_EQ(db.getnumwires(), 0);
  }
  EXPECT_EQ(ut_file->getcount(), 0);
}

TEST_F(GridFiles, OfTheLetterCAreReadAsOrdinaryBinaryGrids) {
  for (const std::string letter : {"C", "X", ""}) {
    BX_DB db;
    ASSERT_EQ(db.loadgrid(put("BX_DB:" + letter + "\n" + small_binary.substr(8)).c_str()), 1) << letter;
    EXPECT_TRUE(qelmodb::same_tree(db, small_, content::grid));
  }
}

TEST_F(GridFiles, ATextLoadLeavesTheTreeAlone) {
  BX_DB db;
  ASSERT_EQ(db.loadgrid(put(small_text).c_str()), 1);
  EXPECT_EQ(db.top, nullptr);
  EXPECT_EQ(db.getinstance(0)->top, nullptr);
  EXPECT_EQ(db.names.getcount(), 0);
}

TEST_F(GridFiles, ABinaryLoadKeepsTheTreeInTheDatabase) {
  BX_DB db;
  ASSERT_EQ(db.loadgrid(put(small_binary).c_str()), 1);
  EXPECT_EQ(db.top, &db);
  EXPECT_EQ(db.getinstance(0)->top, &db);
}

TEST_F(GridFiles, NeverConvertTheHierarchy) {
  BX_DB wide("TOP", 0, 0, 9, 100);
  for (int i = 0; i < 41; ++i) wide.addinstance(new BX_INSTANCE("C", 0, i, 9, i));
  const test::environment large("KRT_LARGE_DESIGN", "1");
  for (const form as : {form::text, form::binary}) {
    BX_DB db;
    ASSERT_EQ(db.loadgrid(put(test::dumped(wide, as, content::grid)).c_str()), 1);
    EXPECT_EQ(db.getnuminstances(), 41);
  }
}

TEST_F(GridFiles, OfAnotherKindAreRefusedWithTheMessageAndStayRegistered) {
  const std::string name = put("BX_DB\n");
  const test::caught_report report;
  EXPECT_EQ(small_.loadgrid(name.c_str()), 0);
  EXPECT_EQ(report.text(), name + " is not a BX_DB file.\n");
  EXPECT_EQ(ut_file->getcount(), 1);
  EXPECT_EQ(small_.getnumwires(), 1);
  ut_file->close_left();
  EXPECT_EQ(ut_file->getcount(), 0);
}

TEST_F(GridFiles, LoadsReplaceWhatTheDatabaseHeldWhateverItWas) {
  BX_DB db("OLD", 0, 0, 500, 500);
  test::fill_rich_database(db);
  for (int round = 0; round < 2; ++round) {
    for (const std::string& bytes : {small_text, small_binary, small_text}) {
      ASSERT_EQ(db.loadgrid(put(bytes).c_str()), 1);
      EXPECT_TRUE(qelmodb::same_tree(db, small_, content::grid));
      EXPECT_EQ(db.getnumwires(), 0);
      EXPECT_EQ(db.names.getcount(), 0);
    }
  }
}

TEST_F(GridFiles, ADatabaseLoadedAfterATextGridBelongsToItselfAgain) {
  BX_DB db;
  ASSERT_EQ(db.loadgrid(put(small_text).c_str()), 1);
  ASSERT_EQ(db.load(put(test::dumped(small_, form::binary)).c_str()), 1);
  EXPECT_EQ(db.top, &db);
  EXPECT_TRUE(qelmodb::same_tree(db, small_, content::database));
}

TEST_F(GridFiles, ThatCannotBeOpenedGiveFalseWithoutAMessage) {
  const test::caught_report report;
  EXPECT_EQ(small_.loadgrid(folder_.file("missing.bxg").c_str()), 0);
  EXPECT_EQ(small_.dumpgrid(folder_.file("missing/out.bxg").c_str(), true), 0);
  EXPECT_EQ(report.text(), "");
}

}  // namespace
