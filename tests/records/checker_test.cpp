// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The checker: sound files give no fault, and each planted fault is told with its place and the names on the
// way to it.
#include <gtest/gtest.h>

#include "record_bytes.h"

namespace {

using qelmodb::check_bytes;
using qelmodb::check_report;
using qelmodb::fault;
using qelmodb::severity;
using test::binary_line;
using test::content;
using test::form;

const std::string sound_text =
    "BX_DB:A\n"
    "BX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n"
    "0\n"
    "2\n"
    "BX_INSTANCE: \"C\" (0, 3) (4, 5)\n"
    "2\n"
    "BX_WIRE:  \"A\" (1, 2)\n"
    "BX_WIRE:  \"B$1\" (3, -4)\n"
    "0\n"
    "BX_INSTANCE: \"D\" (0, 4) (4, 5)\n"
    "0\n"
    "0\n";

const std::string sound_grid_text =
    "BX_DB:A\n"
    "BX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n"
    "1\n"
    "BX_INSTANCE: \"C\" (0, 3) (4, 5)\n"
    "0\n";

/// The text with the first occurrence of something replaced.
std::string with(std::string text, const std::string& old, const std::string& replacement) {
  const std::size_t at = text.find(old);
  EXPECT_NE(at, std::string::npos) << old;
  return text.replace(at, old.size(), replacement);
}

/// The one fault that a file is expected to have.
fault only_fault(const std::string& bytes, content what = content::database) {
  const check_report report = check_bytes(bytes, what);
  EXPECT_EQ(report.faults.size(), 1U);
  return report.faults.empty() ? fault{severity::note, -1, -1, "", "no fault found"} : report.faults[0];
}

void expect_at(const fault& found, severity level, std::int64_t offset, std::int64_t line, const std::string& path,
               const std::string& words) {
  EXPECT_EQ(found.level, level) << found.text();
  EXPECT_EQ(found.offset, offset) << found.text();
  EXPECT_EQ(found.line, line) << found.text();
  EXPECT_EQ(found.path, path) << found.text();
  EXPECT_NE(found.message.find(words), std::string::npos) << found.text();
}

/// A planted fault in a text file, found at a piece of the text.
void expect_text_fault(const std::string& text, const std::string& piece, std::int64_t line, const std::string& path,
                       const std::string& words, severity level = severity::error, content what = content::database) {
  const std::size_t at = piece.empty() ? text.size() : text.find(piece);
  ASSERT_NE(at, std::string::npos) << piece;
  expect_at(only_fault(text, what), level, static_cast<std::int64_t>(at), line, path, words);
}

TEST(Checker, GivesNoFaultForSoundFilesAndCountsWhatTheyHold) {
  const check_report text = check_bytes(sound_text, content::database);
  EXPECT_TRUE(text.faults.empty());
  EXPECT_TRUE(text.sound());
  EXPECT_EQ(text.file_form, form::text);
  EXPECT_EQ(text.file_content, content::database);
  EXPECT_EQ(text.bytes, static_cast<std::int64_t>(sound_text.size()));
  EXPECT_EQ(text.instances, 3);
  EXPECT_EQ(text.wires, 2);
  EXPECT_EQ(text.depth, 1);
  EXPECT_EQ(text.dollar_wires, 1);
  EXPECT_EQ(text.names, 0);
  const check_report grid = check_bytes(sound_grid_text, content::grid);
  EXPECT_TRUE(grid.faults.empty());
  EXPECT_EQ(grid.instances, 2);
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  const check_report binary = check_bytes(test::dumped(db, form::binary), content::database);
  EXPECT_TRUE(binary.faults.empty());
  EXPECT_EQ(binary.file_form, form::binary);
  EXPECT_EQ(binary.names, db.names.getcount() + 1);
  EXPECT_TRUE(check_bytes(test::dumped(db, form::binary, content::grid), content::grid).faults.empty());
}

TEST(CheckerOfText, TellsAForeignFirstLine) {
  expect_at(only_fault("BX_DB\nrest"), severity::error, 0, 0, "", "not a BX_DB file");
  expect_at(only_fault(""), severity::error, 0, 0, "", "not a BX_DB file");
  expect_at(only_fault("BX_DB:A"), severity::error, 7, 0, "", "the first line has no end");
}

TEST(CheckerOfText, TellsAWrongLabel) {
  const std::string text = with(sound_text, "BX_WIRE:  \"B", "BX_WIRES:  \"B");
  expect_text_fault(text, "BX_WIRES", 8, "TOP/C", "expected BX_WIRE: \"name\", found \"BX_WIRES:");
  expect_text_fault(with(sound_text, "BX_INSTANCE: \"D", "BX_BLOCK: \"D"), "BX_BLOCK", 10, "TOP",
                    "expected BX_INSTANCE:");
}

TEST(CheckerOfText, TellsALabelThatDoesNotStartANameAtThePlaceOfTheQuote) {
  expect_text_fault(with(sound_text, "\"A\" (1", "A (1"), "A (1, 2)", 7, "TOP/C", "found \"A (1, 2)\"");
}

TEST(CheckerOfText, TellsNamesThatAreTooLongOrHaveNoEnd) {
  const std::string name(100, 'n');
  expect_text_fault(with(sound_text, "\"A\"", "\"" + name + "\""), name, 7, "TOP/C", "longer than 99 characters");
  EXPECT_TRUE(check_bytes(with(sound_text, "\"A\"", "\"" + std::string(99, 'A') + "\""), content::database).loadable());
  expect_text_fault("BX_DB:A\nBX_INSTANCE: \"TOP", "TOP", 2, "", "no closing quote");
}

TEST(CheckerOfText, TellsAMissingQuoteInItsLineAndNotWhereTheNextOneStands) {
  const std::string words = "the name has no closing quote in its line";
  expect_text_fault(with(sound_text, "\"A\" (1", "\"A (1"), "A (1", 7, "TOP/C", words);
  expect_text_fault(with(sound_text, "\"C\" (0", "\"C (0"), "C (0", 5, "TOP", words);
  expect_text_fault(with(sound_text, "\"C\" (0", "\"" + std::string(98, 'n') + "\n"), std::string(98, 'n'), 5, "TOP",
                    words);
}

TEST(CheckerOfText, TellsADoubleQuoteInsideAName) {
  expect_text_fault(with(sound_text, "\"A\"", "\"A\"X\""), "X\" (1", 7, "TOP/C", "expected ' ' before a point");
}

TEST(CheckerOfText, TellsANulByteInAName) {
  expect_text_fault(with(sound_text, "\"A\"", std::string("\"A\0\"", 4)), std::string("A\0", 2), 7, "TOP/C",
                    "NUL byte");
}

TEST(CheckerOfText, WarnsOfALineEndInAName) {
  expect_text_fault(with(sound_text, "\"A\"", "\"A\n\""), "A\n\" (1", 7, "TOP/C", "holds a line end",
                    severity::warning);
}

TEST(CheckerOfText, TellsFaultyPoints) {
  const auto fault_in = [](const std::string& point, const std::string& piece, const std::string& words) {
    expect_text_fault(with(sound_text, "(3, -4)", point), piece, 8, "TOP/C", words);
  };
  fault_in("3, -4)", "3, -4)", "expected '(' of a point");
  fault_in("(x, -4)", "x, -4)", "expected the number x and ','");
  fault_in("(3, -4x)", "-4x)", "expected the number y and ')'");
  fault_in("(3 -4)", "3 -4)", "expected the number x");
  fault_in("(, -4)", ", -4)", "expected the number x");
  fault_in("(2147483648, -4)", "2147483648", "x does not fit into 32 bits");
  fault_in("(+-3, -4)", "+-3", "expected the number x");
  fault_in("(3, -2147483649)", "-2147483649", "y does not fit into 32 bits");
  fault_in("(" + std::string(100, '0') + "3, -4)", std::string(100, '0'), "expected the number x");
}

TEST(CheckerOfText, TakesTheGreatestAndLeastNumbers) {
  EXPECT_TRUE(check_bytes(with(sound_text, "(3, -4)", "(2147483647, -2147483648)"), content::database).sound());
}

TEST(CheckerOfText, TellsWhatStandsBehindARecordInItsLine) {
  expect_text_fault(with(sound_text, "(3, -4)", "(3, -4) more"), " more", 8, "TOP/C", "expected the end of the line");
  EXPECT_TRUE(check_bytes(with(sound_text, "(3, -4)\n", "(3, -4) \t\r\n"), content::database).sound());
}

TEST(CheckerOfText, TellsFaultyCounts) {
  expect_text_fault(with(sound_text, "\n2\nBX_WIRE", "\ntwo\nBX_WIRE"), "two", 6, "TOP/C", "line with the wire count");
  expect_text_fault(with(sound_text, "\n2\nBX_INST", "\n2 x\nBX_INST"), "2 x", 4, "TOP", "line with the child count");
  expect_text_fault(with(sound_text, "\n2\nBX_WIRE", "\n-2\nBX_WIRE"), "-2\nBX", 6, "TOP/C", "the wire count is -2");
  expect_text_fault(with(sound_text, "\n2\nBX_INST", "\n-1\nBX_INST"), "-1\nBX", 4, "TOP", "the child count is -1");
  expect_text_fault(with(sound_text, "\n2\nBX_WIRE", "\n2147483647\nBX_WIRE"), "2147483647", 6, "TOP/C", "bytes left");
  expect_text_fault(with(sound_text, "\n2\nBX_WIRE", "\n2147483648\nBX_WIRE"), "2147483648", 6, "TOP/C", "32 bits");
}

TEST(CheckerOfText, TellsAFileThatIsCutOff) {
  const std::string in_a_count = sound_text.substr(0, sound_text.find("\n2\nBX_WIRE") + 2);
  expect_at(only_fault(in_a_count), severity::error, static_cast<std::int64_t>(in_a_count.size()), 6, "TOP/C",
            "the line with the wire count has no end");
  expect_text_fault(sound_text.substr(0, sound_text.find(" (3, -4)") + 8), "", 8, "TOP/C", "the line has no end");
}

TEST(CheckerOfText, NotesThatTheLastLineHasNoEnd) {
  const std::string unended = sound_text.substr(0, sound_text.size() - 1);
  expect_at(only_fault(unended), severity::note, static_cast<std::int64_t>(unended.size()), 12, "TOP/D",
            "the last line has no end");
  EXPECT_TRUE(check_bytes(unended, content::database).sound());
}

TEST(CheckerOfText, TellsWhatNothingReadsBehindTheLastRecord) {
  const fault found = only_fault(sound_text + "\n\nrest");
  expect_at(found, severity::error, static_cast<std::int64_t>(sound_text.size()) + 2, 15, "", "4 bytes stand behind");
  EXPECT_TRUE(check_bytes(sound_text + "\n \r\n", content::database).sound());
}

TEST(CheckerOfText, WarnsOfWiresAndChildrenOutOfOrder) {
  expect_text_fault(with(sound_text, "\"A\" (1", "\"C\" (1"), "BX_WIRE:  \"B$1\"", 8, "TOP/C/B$1",
                    "behind \"C\": wires are not in name order", severity::warning);
  expect_text_fault(with(sound_text, "(0, 3) (4", "(0, 5) (4"), "BX_INSTANCE: \"D\"", 10, "TOP/D",
                    "children are not in position order", severity::warning);
  const check_report report = check_bytes(with(sound_text, "(0, 3) (4", "(0, 5) (4"), content::database);
  EXPECT_TRUE(report.loadable());
  EXPECT_FALSE(report.sound());
}

TEST(CheckerOfText, TakesEqualWiresAndChildrenAtOnePlace) {
  const std::string text = with(with(sound_text, "\"B$1\"", "\"A\""), "\"D\" (0, 4)", "\"D\" (0, 3)");
  EXPECT_TRUE(check_bytes(text, content::database).sound());
}

TEST(CheckerOfText, WarnsOfRectanglesThatAreNotNormalised) {
  expect_text_fault(with(sound_text, "(0, 4) (4, 5)", "(0, 4) (4, 3)"), "BX_INSTANCE: \"D\"", 10, "TOP/D",
                    "(0, 4) (4, 3) is not normalised", severity::warning);
}

TEST(CheckerOfText, NotesRectanglesThatStickOut) {
  expect_text_fault(with(sound_text, "(0, 4) (4, 5)", "(0, 4) (4, 10)"), "BX_INSTANCE: \"D\"", 10, "TOP/D",
                    "sticks out", severity::note);
  EXPECT_TRUE(check_bytes(with(sound_text, "(0, 4) (4, 5)", "(0, 4) (4, 10)"), content::database).sound());
}

TEST(CheckerOfTextGrids, TellsTheSameFaults) {
  const auto fault_in = [](const std::string& text, const std::string& piece, std::int64_t line,
                           const std::string& path, const std::string& words, severity level = severity::error) {
    expect_text_fault(text, piece, line, path, words, level, content::grid);
  };
  fault_in(with(sound_grid_text, "\"C\"", "C"), "C (0", 4, "TOP", "expected BX_INSTANCE:");
  fault_in(with(sound_grid_text, "\n1\n", "\nx\n"), "x\n", 3, "TOP", "child count");
  fault_in(with(sound_grid_text, "\n1\n", "\n7\n"), "7\n", 3, "TOP", "bytes left");
  fault_in(with(sound_grid_text, "(4, 5)", "(4, 2)"), "BX_INSTANCE: \"C\"", 4, "TOP/C", "normalised",
           severity::warning);
  fault_in(sound_grid_text + "rest\n", "rest\n", 6, "", "stand behind");
}

TEST(Checker, CountsFaultsBeyondTheMostItDescribes) {
  std::string text = "BX_DB:A\nBX_INSTANCE: \"TOP\" (0, 0) (9, 9)\n0\n150\n";
  for (int i = 0; i < 150; ++i) text += "BX_INSTANCE: \"C\" (5, 5) (4, 4)\n0\n0\n";
  const check_report report = check_bytes(text, content::database);
  EXPECT_EQ(report.warnings, 150);
  EXPECT_EQ(report.faults.size(), 100U);
  EXPECT_EQ(check_bytes(text, content::database, {0}).faults.size(), 0U);
  EXPECT_EQ(check_bytes(text, content::database, {0}).warnings, 150);
}

TEST(Checker, WritesFaultsAsOneLineWithPlaceAndPath) {
  EXPECT_EQ((fault{severity::error, 5, 12, "TOP/C", "the wire count is -2"}.text()),
            "line 12: the wire count is -2 [TOP/C]");
  EXPECT_EQ((fault{severity::error, 345, 0, "", "cut off"}.text()), "byte 345: cut off");
}

TEST(Checker, ShowsUnprintableBytesAsHexadecimalNumbers) {
  const fault found = only_fault(with(sound_text, "(3, -4)", "(\x01\xff, -4)"));
  EXPECT_NE(found.message.find("\\x01\\xFF, -4)"), std::string::npos) << found.message;
}

TEST(Checker, ShowsNamesInMessagesAndPathsWithoutControlCharacters) {
  const std::string text = with(with(sound_text, "\"A\"", "\"C\x1b[2J\n\xff\""), "\"TOP\"", "\"T\nP\x7f\xc3\xa4\"");
  const check_report report = check_bytes(text, content::database);
  ASSERT_EQ(report.warnings, 3);
  const fault& order = report.faults[2];
  EXPECT_EQ(order.message, "the wire stands behind \"C\\x1B[2J\\x0A\\xFF\": wires are not in name order");
  EXPECT_EQ(order.path, "T\nP\x7f\xc3\xa4/C/B$1");
  EXPECT_EQ(order.text(), "line 10: " + order.message + " [T\\x0AP\\x7F\xc3\xa4/C/B$1]");
}

TEST(Checker, KeepsTheRootAndTheEndOfALongPath) {
  const auto path_at = [](int levels) {
    std::string bytes = "BX_DB:A\n";
    for (int i = 0; i < levels; ++i) bytes += "BX_INSTANCE: \"N" + std::to_string(i + 100) + "\" (0, 0) (1, 1)\n0\n1\n";
    return only_fault(bytes).path;
  };
  std::string whole = "N100";
  for (int i = 1; i < 80; ++i) whole += "/N" + std::to_string(i + 100);
  EXPECT_EQ(path_at(79), whole.substr(0, whole.size() - 5));
  EXPECT_EQ(path_at(80), whole);
  // The last ones have room for 80 names.
  EXPECT_EQ(path_at(81), whole + "/N180");
  EXPECT_EQ(path_at(82), "N100/..." + whole.substr(9) + "/N180/N181");
}

TEST(Checker, ChecksFilesByNameAndTellsThoseItCannotRead) {
  const test::temporary_folder folder;
  test::write_file(folder.file("a.bxd"), sound_text);
  EXPECT_TRUE(qelmodb::check_file(folder.file("a.bxd").c_str(), content::database).sound());
  const check_report missing = qelmodb::check_file(folder.file("none.bxd").c_str(), content::database);
  ASSERT_EQ(missing.faults.size(), 1U);
  EXPECT_FALSE(missing.loadable());
  EXPECT_EQ(missing.faults[0].offset, 0);
  EXPECT_NE(missing.faults[0].message.find("none.bxd"), std::string::npos);
  EXPECT_FALSE(qelmodb::check_file(folder.name().c_str(), content::database).loadable());
  EXPECT_EQ(ut_file->getcount(), 0);
}

TEST(DetectContent, TellsDatabasesFromGrids) {
  EXPECT_EQ(qelmodb::detect_content(sound_text), content::database);
  EXPECT_EQ(qelmodb::detect_content(sound_grid_text), content::grid);
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  for (const form as : {form::text, form::binary}) {
    for (const content what : {content::database, content::grid}) {
      EXPECT_EQ(qelmodb::detect_content(test::dumped(db, as, what)), what);
    }
  }
  const BX_DB leaf("T", 0, 0, 1, 1);
  EXPECT_EQ(qelmodb::detect_content(test::dumped(leaf, form::text, content::grid)), content::grid);
  EXPECT_EQ(qelmodb::detect_content(test::dumped(leaf, form::text)), content::database);
  EXPECT_EQ(qelmodb::detect_content("BX_DB:C\n"), content::database);
  EXPECT_EQ(qelmodb::detect_content(""), content::database);
}

}  // namespace
