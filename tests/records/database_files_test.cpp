// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Database files by name: what is written, what is accepted, and what happens to the files around it.
#include <gtest/gtest.h>

#include <filesystem>

#include "record_bytes.h"

namespace {

using test::binary_line;
using test::content;
using test::form;
using test::text_line;

const std::string small_text =
    "BX_DB:A\nBX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n1\nBX_WIRE:  \"W\" (1, 2)\n1\n"
    "BX_INSTANCE: \"C\" (0, 3) (4, 5)\n0\n0\n";

void fill_small(BX_DB& db) {
  const BX_WIRE wire("W", 1, 2);
  db.addwire(&wire);
  db.addinstance(new BX_INSTANCE("C", 0, 3, 4, 5));
}

const std::string small_binary =
    binary_line + test::table_bytes({{1, "TOP"}, {2, "W"}, {3, "C"}}) +
    test::instance_bytes(1, {0, 0, 9, 9}, {test::wire_bytes(2, 1, 2)}, {test::instance_bytes(3, {0, 3, 4, 5})});

class DatabaseFiles : public testing::Test {
 protected:
  DatabaseFiles() : small_("TOP", 0, 0, 9, 9) { fill_small(small_); }

  std::string put(const std::string& name, const std::string& bytes) const {
    test::write_file(folder_.file(name), bytes);
    return folder_.file(name);
  }

  unsigned char load_bytes(BX_DB& db, const std::string& bytes) const { return db.load(put("in.bxd", bytes).c_str()); }

  std::size_t files_in_folder() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_.path())) ++count;
    return count;
  }

  test::temporary_folder folder_;
  test::environment plain_{"KRT_LARGE_DESIGN", nullptr};
  BX_DB small_;
};

TEST_F(DatabaseFiles, TextIsTheFirstLineAndTheRootsRecord) {
  const std::string name = folder_.file("out.bxd");
  ASSERT_EQ(small_.dump(name.c_str(), true), 1);
  EXPECT_EQ(test::read_file(name), small_text);
}

TEST_F(DatabaseFiles, BinaryIsTheFirstLineTheNameTableAndTheRootsRecord) {
  const std::string name = folder_.file("out.bxd");
  ASSERT_EQ(small_.dump(name.c_str(), false), 1);
  const std::uint64_t root = test::address_of(small_.name);
  const std::uint64_t c = test::address_of(small_.getinstance(0)->name);
  const std::uint64_t w = test::address_of(small_.getwire(0)->name);
  EXPECT_EQ(test::read_file(name), "BX_DB:B\n" + test::number(3) + test::reference(root) + test::stored("TOP") +
                                       test::reference(c) + test::stored("C") + test::reference(w) + test::stored("W") +
                                       test::instance_bytes(root, {0, 0, 9, 9}, {test::wire_bytes(w, 1, 2)},
                                                            {test::instance_bytes(c, {0, 3, 4, 5})}));
}

TEST_F(DatabaseFiles, BothFormsLoadByName) {
  for (const std::string& bytes : {small_text, small_binary}) {
    BX_DB db;
    ASSERT_EQ(load_bytes(db, bytes), 1);
    EXPECT_TRUE(qelmodb::same_tree(db, small_, content::database));
    EXPECT_EQ(db.top, &db);
    EXPECT_EQ(db.getinstance(0)->top, &db);
  }
  EXPECT_EQ(ut_file->getcount(), 0);
}

TEST_F(DatabaseFiles, ATextLoadInternsEveryNameSortedAndOnce) {
  test::opened_db db;
  ASSERT_EQ(load_bytes(db, small_text), 1);
  ASSERT_EQ(db.names.getcount(), 3);
  EXPECT_STREQ(db.names[0], "C");
  EXPECT_STREQ(db.names[1], "TOP");
  EXPECT_STREQ(db.names[2], "W");
  EXPECT_EQ(db.name, db.names[1]);
  EXPECT_EQ(db.getwire(0)->name, db.names[2]);
}

TEST_F(DatabaseFiles, ALetterXAfterTheColonIsReadAsBinary) {
  for (const std::string letter : {"X", "", "b", "B and more"}) {
    BX_DB db;
    ASSERT_EQ(load_bytes(db, "BX_DB:" + letter + "\n" + small_binary.substr(8)), 1) << letter;
    EXPECT_TRUE(qelmodb::same_tree(db, small_, content::database));
  }
}

TEST_F(DatabaseFiles, TextBehindTheLetterAIsIgnored) {
  BX_DB db;
  ASSERT_EQ(load_bytes(db, "BX_DB:A written by hand\r\n" + small_text.substr(8)), 1);
  EXPECT_TRUE(qelmodb::same_tree(db, small_, content::database));
}

TEST_F(DatabaseFiles, WithoutTheColonAreRefusedWithTheMessage) {
  for (const char* bytes : {"BX_DB\n", "BX_DB A\n", "bx_db:A\n", "", "\n"}) {
    const std::string name = put("foreign.bxd", bytes);
    const test::caught_report report;
    BX_DB db;
    EXPECT_EQ(db.load(name.c_str()), 0);
    EXPECT_EQ(report.text(), name + " is not a BX_DB file.\n");
  }
  ut_file->close_left();
}

TEST_F(DatabaseFiles, ARefusedFileStaysRegisteredUntilTheLeftOnesAreClosed) {
  const std::string name = put("foreign.bxd", "something else\n");
  const bx_long before = ut_file->getcount();
  const test::caught_report report;
  BX_DB db;
  EXPECT_EQ(db.load(name.c_str()), 0);
  EXPECT_EQ(ut_file->getcount(), before + 1);
  ut_file->close_left();
  EXPECT_EQ(ut_file->getcount(), before);
}

TEST_F(DatabaseFiles, ARefusedFileCanBeReplacedByADump) {
  const std::string name = put("foreign.bxd", "something else\n");
  const test::caught_report report;
  EXPECT_EQ(small_.load(name.c_str()), 0);
  EXPECT_EQ(small_.dump(name.c_str(), true), 1) << ut_file->geterror();
  EXPECT_EQ(test::read_file(name), small_text);
}

TEST_F(DatabaseFiles, ARefusedFileLeavesTheOldContentUntouched) {
  const test::caught_report report;
  BX_INSTANCE* child = small_.getinstance(0);
  EXPECT_EQ(load_bytes(small_, "something else\n"), 0);
  EXPECT_EQ(small_.load(folder_.file("missing.bxd").c_str()), 0);
  EXPECT_EQ(small_.load(folder_.name().c_str()), 0);
  EXPECT_EQ(small_.getinstance(0), child);
  EXPECT_EQ(text_line + test::text_of(small_), small_text);
  ut_file->close_left();
}

TEST_F(DatabaseFiles, AFileThatCannotBeOpenedGivesFalseWithoutAMessage) {
  const test::caught_report report;
  BX_DB db;
  EXPECT_EQ(db.load(folder_.file("missing.bxd").c_str()), 0);
  EXPECT_EQ(db.load(folder_.name().c_str()), 0);
  EXPECT_EQ(db.load(""), 0);
  EXPECT_EQ(report.text(), "");
  EXPECT_EQ(ut_file->getcount(), 0);
}

TEST_F(DatabaseFiles, ALoadReplacesWhatTheDatabaseHeld) {
  for (const std::string& bytes : {small_text, small_binary}) {
    BX_DB db("OLD", 0, 0, 500, 500);
    test::fill_rich_database(db);
    ASSERT_EQ(load_bytes(db, bytes), 1);
    EXPECT_EQ(text_line + test::text_of(db), small_text);
    EXPECT_EQ(db.names.getcount(), 3);
  }
}

TEST_F(DatabaseFiles, ADamagedFileReplacesTheOldContentByWhatWasRead) {
  BX_DB db("OLD", 0, 0, 500, 500);
  test::fill_rich_database(db);
  ASSERT_EQ(load_bytes(db, small_binary.substr(0, small_binary.size() - 2)), 0);
  EXPECT_STREQ(db.name, "TOP");
  EXPECT_EQ(db.getnumwires(), 1);
  EXPECT_EQ(db.getnuminstances(), 1);
}

TEST_F(DatabaseFiles, ADamagedCompressedFileGivesFalseAndReleasesTheOldContent) {
  EXPECT_EQ(load_bytes(small_, "BX_DB:C\n"), 0);
  EXPECT_EQ(small_.getnuminstances(), 0);
  EXPECT_EQ(small_.getnumwires(), 0);
}

TEST_F(DatabaseFiles, ADumpReplacesAnExistingFileAndLeavesNothingBeside) {
  const std::string name = put("out.bxd", "old");
  ASSERT_EQ(small_.dump(name.c_str(), true), 1);
  EXPECT_EQ(test::read_file(name), small_text);
  EXPECT_EQ(files_in_folder(), 1U);
}

TEST_F(DatabaseFiles, ADumpBelowAFileGivesFalseAndLeavesTheFile) {
  const std::string name = put("file", "old");
  EXPECT_EQ(small_.dump((name + "/out.bxd").c_str(), true), 0);
  EXPECT_EQ(small_.dump((name + "/out.bxd").c_str(), false), 0);
  EXPECT_EQ(test::read_file(name), "old");
}

TEST_F(DatabaseFiles, PresenceOfTheLargeDesignVariableConvertsAfterALoad) {
  const test::separator keep('$');
  BX_DB wide("TOP", 0, 0, 9, 100);
  for (int i = 0; i < 41; ++i) wide.addinstance(new BX_INSTANCE("C", 0, i, 9, i));
  for (const form as : {form::text, form::binary}) {
    const std::string name = put("wide.bxd", test::dumped(wide, as));
    BX_DB plain;
    ASSERT_EQ(plain.load(name.c_str()), 1);
    EXPECT_EQ(plain.getnuminstances(), 41);
    for (const char* value : {"0", "", "1"}) {
      const test::environment large("KRT_LARGE_DESIGN", value);
      BX_DB converted;
      ASSERT_EQ(converted.load(name.c_str()), 1);
      EXPECT_EQ(converted.getnuminstances(), 6);
      EXPECT_STREQ(converted.getinstance(0)->name, "BXD0000_TOP");
    }
  }
}

TEST_F(DatabaseFiles, TheLargeDesignVariableConvertsWhatADamagedFileGave) {
  BX_DB wide("TOP", 0, 0, 9, 100);
  for (int i = 0; i < 42; ++i) wide.addinstance(new BX_INSTANCE("C", 0, i, 9, i));
  std::string bytes = test::dumped(wide, form::binary);
  bytes.resize(bytes.size() - 1);
  const test::environment large("KRT_LARGE_DESIGN", "1");
  BX_DB db;
  EXPECT_EQ(load_bytes(db, bytes), 0);
  EXPECT_EQ(db.getnuminstances(), 6);
}

TEST_F(DatabaseFiles, DumpingDoesNotChangeTheDatabase) {
  const std::string before = test::text_of(small_);
  const bx_long names = small_.names.getcount();
  ASSERT_EQ(small_.dump(folder_.file("a").c_str(), true), 1);
  ASSERT_EQ(small_.dump(folder_.file("b").c_str(), false), 1);
  EXPECT_EQ(test::text_of(small_), before);
  EXPECT_EQ(small_.names.getcount(), names);
}

}  // namespace
