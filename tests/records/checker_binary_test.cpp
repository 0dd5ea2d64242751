// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The checker on binary files, where places are byte offsets.
#include <gtest/gtest.h>

#include "record_bytes.h"

namespace {

using qelmodb::check_bytes;
using qelmodb::check_report;
using qelmodb::fault;
using qelmodb::severity;
using test::binary_line;
using test::content;
using test::grid_bytes;
using test::instance_bytes;
using test::number;
using test::table_bytes;
using test::wire_bytes;

/// A file of one root "TOP" with a child "C" that has the wires "A" and "B", all parts exchangeable.
struct small_file {
  std::string first_line = binary_line;
  std::string table = table_bytes({{1, "TOP"}, {2, "C"}, {3, "A"}, {4, "B"}});
  std::string root_head = test::reference(1) + test::box_bytes({0, 0, 9, 9});
  std::string root_wires = number(0);
  std::string root_children = number(1);
  std::string child_head = test::reference(2) + test::box_bytes({0, 3, 4, 5});
  std::string child_wires = number(2);
  std::string wire_a = wire_bytes(3, 1, 2);
  std::string wire_b = wire_bytes(4, 3, -4);
  std::string child_children = number(0);
  std::string rest;

  std::string bytes() const { return upto(&rest) + rest; }

  /// What stands before one of the parts.
  std::string upto(const std::string* part) const {
    std::string all;
    for (const std::string* each : {&first_line, &table, &root_head, &root_wires, &root_children, &child_head,
                                    &child_wires, &wire_a, &wire_b, &child_children, &rest}) {
      if (each == part) break;
      all += *each;
    }
    return all;
  }
};

void expect_fault(const std::string& bytes, std::size_t offset, const std::string& path, const std::string& words,
                  severity level = severity::error, content what = content::database) {
  const check_report report = check_bytes(bytes, what);
  ASSERT_EQ(report.faults.size(), 1U);
  const fault& found = report.faults[0];
  EXPECT_EQ(found.level, level) << found.text();
  EXPECT_EQ(found.offset, static_cast<std::int64_t>(offset)) << found.text();
  EXPECT_EQ(found.line, 0) << found.text();
  EXPECT_EQ(found.path, path) << found.text();
  EXPECT_NE(found.message.find(words), std::string::npos) << found.text();
}

class CheckerOfBinary : public testing::Test {
 protected:
  /// Expects the fault at the start of a part, or some bytes behind it.
  void expect_at(const std::string* part, std::size_t behind, const std::string& path, const std::string& words,
                 severity level = severity::error) const {
    expect_fault(file_.bytes(), file_.upto(part).size() + behind, path, words, level);
  }

  small_file file_;
};

TEST_F(CheckerOfBinary, GivesNoFaultForASoundFile) {
  const check_report report = check_bytes(file_.bytes(), content::database);
  EXPECT_TRUE(report.faults.empty());
  EXPECT_EQ(report.names, 4);
  EXPECT_EQ(report.wires, 2);
  EXPECT_EQ(report.instances, 2);
}

TEST_F(CheckerOfBinary, NotesAnUnknownLetter) {
  file_.first_line = "BX_DB:X\n";
  expect_fault(file_.bytes(), 6, "", "letter of the form is unknown", severity::note);
}

TEST_F(CheckerOfBinary, TellsAFaultyNameCount) {
  file_.table = number(-1) + file_.table.substr(4);
  expect_at(&file_.table, 0, "", "the name count is -1");
  file_.table = number(2147483647) + file_.table.substr(4);
  expect_at(&file_.table, 0, "", "the name count is 2147483647, but the");
}

TEST_F(CheckerOfBinary, TellsANameOfAHundredCharacters) {
  file_.table = table_bytes({{1, "TOP"}, {2, std::string(100, 'n')}, {3, "A"}, {4, "B"}});
  expect_at(&file_.table, 4 + 8 + 4 + 8, "", "longer than 99 characters");
  file_.table = table_bytes({{1, "TOP"}, {2, std::string(99, 'n')}, {3, "A"}, {4, "B"}});
  EXPECT_TRUE(check_bytes(file_.bytes(), content::database).sound());
}

TEST_F(CheckerOfBinary, TellsANameTableThatIsCutOff) {
  expect_fault(binary_line + number(1) + test::reference(1) + "T", 8 + 4 + 8, "", "cut off by the end of the file");
  expect_fault(binary_line + number(1).substr(0, 3), 8, "", "expected the 4 bytes of the name count, found 3");
}

TEST_F(CheckerOfBinary, WarnsOfAnAddressDefinedTwiceByDifferentNames) {
  file_.table = table_bytes({{1, "TOP"}, {2, "C"}, {3, "A"}, {4, "B"}, {1, "LAST"}});
  const std::size_t entry = 8 + file_.table.size() - 8 - 5;
  expect_fault(file_.bytes(), entry, "", "name 4 has the address of an earlier one", severity::warning);
  file_.table = table_bytes({{1, "TOP"}, {2, "C"}, {3, "A"}, {4, "B"}, {1, "TOP"}});
  EXPECT_TRUE(check_bytes(file_.bytes(), content::database).sound());
}

TEST_F(CheckerOfBinary, NotesANameWithADoubleQuote) {
  file_.table = table_bytes({{1, "TOP"}, {2, "C"}, {3, "A"}, {4, "B\""}});
  expect_fault(file_.bytes(), 8 + file_.table.size() - 11, "", "double quote", severity::note);
}

TEST_F(CheckerOfBinary, TellsUnresolvedReferencesOfWiresAndInstances) {
  file_.wire_b = wire_bytes(99, 3, -4);
  const check_report wire = check_bytes(file_.bytes(), content::database);
  ASSERT_EQ(wire.errors, 1);
  EXPECT_FALSE(wire.loadable());
  EXPECT_EQ(wire.faults[0].offset, static_cast<std::int64_t>(file_.upto(&file_.wire_b).size()));
  EXPECT_EQ(wire.faults[0].path, "TOP/C");
  EXPECT_NE(wire.faults[0].message.find("0000000000000063 is not in the name table"), std::string::npos);
  file_ = small_file();
  file_.child_head = test::reference(0xabcdef0123456789) + test::box_bytes({0, 3, 4, 5});
  expect_at(&file_.child_head, 0, "TOP", "ABCDEF0123456789 is not in the name table");
}

TEST_F(CheckerOfBinary, TakesReferenceZeroForAMissingName) {
  file_.child_head = test::reference(0) + test::box_bytes({0, 3, 4, 5});
  EXPECT_TRUE(check_bytes(file_.bytes(), content::database).sound());
}

TEST_F(CheckerOfBinary, NotesANamelessRoot) {
  file_.root_head = test::reference(77) + test::box_bytes({0, 0, 9, 9});
  expect_at(&file_.root_head, 0, "", "the root has no name", severity::note);
  BX_DB db;
  EXPECT_TRUE(test::loaded(db, file_.bytes()));
}

TEST_F(CheckerOfBinary, TellsFaultyCounts) {
  file_.child_wires = number(-2);
  expect_at(&file_.child_wires, 0, "TOP/C", "the wire count is -2");
  file_.child_wires = number(3);
  expect_at(&file_.child_wires, 0, "TOP/C", "the wire count is 3, but the 36 bytes left hold at most 2");
  file_ = small_file();
  file_.root_children = number(-1);
  expect_at(&file_.root_children, 0, "TOP", "the child count is -1");
  file_.root_children = number(2147483647);
  expect_at(&file_.root_children, 0, "TOP", "the child count is 2147483647");
}

TEST_F(CheckerOfBinary, TellsRecordsThatAreCutOff) {
  const std::string whole = file_.bytes();
  const std::size_t head = file_.upto(&file_.root_head).size();
  expect_fault(whole.substr(0, head + 5), head, "", "expected the 8 bytes of a name reference, found 5");
  expect_fault(whole.substr(0, head + 8 + 6), head + 8 + 4, "", "expected the 4 bytes of ymin, found 2");
  expect_fault(whole.substr(0, head + 24), head + 24, "TOP", "expected the 4 bytes of wire count, found 0");
}

TEST_F(CheckerOfBinary, TellsEveryByteBehindTheLastRecord) {
  file_.rest = "\n";
  expect_at(&file_.rest, 0, "", "1 bytes stand behind the last record");
}

TEST_F(CheckerOfBinary, WarnsOfWiresAndChildrenOutOfOrder) {
  std::swap(file_.wire_a, file_.wire_b);
  expect_at(&file_.wire_b, 0, "TOP/C/A", "behind \"B\": wires are not in name order", severity::warning);
  file_ = small_file();
  file_.root_children = number(2) + instance_bytes(2, {0, 4, 4, 5});
  expect_at(&file_.child_head, 0, "TOP/C", "children are not in position order", severity::warning);
}

TEST_F(CheckerOfBinary, WarnsOfRectanglesThatAreNotNormalisedAndNotesThoseThatStickOut) {
  file_.child_head = test::reference(2) + test::box_bytes({5, 3, 4, 5});
  expect_at(&file_.child_head, 0, "TOP/C", "(5, 3) (4, 5) is not normalised", severity::warning);
  file_.child_head = test::reference(2) + test::box_bytes({-1, 3, 4, 5});
  expect_at(&file_.child_head, 0, "TOP/C", "sticks out", severity::note);
}

TEST_F(CheckerOfBinary, ReportsEveryFaultUpToADamagedRecord) {
  file_.child_head = test::reference(2) + test::box_bytes({5, 3, 4, 5});
  std::swap(file_.wire_a, file_.wire_b);
  file_.child_children = number(-1);
  const check_report report = check_bytes(file_.bytes(), content::database);
  ASSERT_EQ(report.faults.size(), 3U);
  EXPECT_EQ(report.warnings, 2);
  EXPECT_EQ(report.errors, 1);
  EXPECT_LT(report.faults[0].offset, report.faults[1].offset);
  EXPECT_LT(report.faults[1].offset, report.faults[2].offset);
}

const std::string grid_start = binary_line + test::stored("TOP") + test::box_bytes({0, 0, 9, 9});

TEST(CheckerOfBinaryGrids, TellsFaultyNames) {
  const std::string long_name(255, 'n');
  expect_fault(grid_start + number(1) + grid_bytes(long_name, {0, 0, 1, 1}), grid_start.size() + 4, "TOP",
               "longer than 254 characters", severity::error, content::grid);
  EXPECT_TRUE(
      check_bytes(grid_start + number(1) + grid_bytes(long_name.substr(1), {0, 0, 1, 1}), content::grid).sound());
  expect_fault(binary_line + "TOP", 8, "", "cut off", severity::error, content::grid);
}

TEST(CheckerOfBinaryGrids, TellsFaultyCounts) {
  expect_fault(grid_start + number(-1), grid_start.size(), "TOP", "the child count is -1", severity::error,
               content::grid);
  expect_fault(grid_start + number(2) + grid_bytes("C", {0, 0, 1, 1}), grid_start.size(), "TOP",
               "the 22 bytes left hold at most 1", severity::error, content::grid);
}

TEST(CheckerOfBinaryGrids, TellsWhatStandsBehindAndWarnsOfRectangles) {
  expect_fault(grid_start + number(0) + "rest", grid_start.size() + 4, "", "4 bytes stand behind", severity::error,
               content::grid);
  expect_fault(grid_start + number(1) + grid_bytes("C", {0, 3, 1, 2}), grid_start.size() + 4, "TOP/C", "normalised",
               severity::warning, content::grid);
}

/// The checker is held against the loader on random damage: what it calls loadable loads, and what it calls
/// an error is refused or was read as something else than the bytes say.
TEST(CheckerAgainstLoader, AgreesOnRandomDamageOfBinaryFiles) {
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  std::mt19937 random(5150);
  for (const content what : {content::database, content::grid}) {
    const std::string whole = test::dumped(db, test::form::binary, what);
    int loadable = 0;
    for (int i = 0; i < 4000; ++i) {
      std::string bytes = whole;
      for (auto changes = random() % 3 + 1; changes > 0; --changes) {
        bytes[8 + random() % (bytes.size() - 8)] = static_cast<char>(random() % 2 != 0 ? random() % 256 : random() % 4);
      }
      const check_report report = check_bytes(bytes, what);
      const test::separator keep('$');
      BX_DB read;
      const bool good = test::loaded(read, bytes, what);
      if (!report.loadable()) continue;
      ++loadable;
      ASSERT_TRUE(good) << i;
      const qelmodb::tree_size size = qelmodb::measure(read);
      EXPECT_EQ(report.instances, size.instances);
      EXPECT_EQ(report.wires, size.wires);
      EXPECT_EQ(report.depth, size.depth);
    }
    EXPECT_GT(loadable, 500);
  }
}

}  // namespace
