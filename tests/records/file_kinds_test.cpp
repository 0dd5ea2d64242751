// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the checker says of files that are something else than what was expected.
#include <gtest/gtest.h>

#include "builders.h"
#include "record_bytes.h"

namespace {

using namespace std::string_view_literals;
using qelmodb::check_bytes;
using qelmodb::check_report;
using qelmodb::content;
using qelmodb::form;

constexpr std::string_view leaf_text = "BX_DB:A\nBX_INSTANCE: \"T\" (0, 0) (9, 9)\n0\n0\n";
constexpr std::string_view leaf_grid = "BX_DB:A\nBX_INSTANCE: \"T\" (0, 0) (9, 9)\n0\n";

std::string first_error(const check_report& report) {
  for (const qelmodb::fault& fault : report.faults) {
    if (fault.level == qelmodb::severity::error) return fault.message;
  }
  return {};
}

TEST(FileKinds, OfForeignFilesAreTold) {
  const std::pair<std::string_view, const char*> kinds[] = {
      {""sv, "empty"},
      {"\x89PNG\r\n\x1a\n...."sv, "a PNG picture"},
      {"\xff\xd8\xff\xe0...."sv, "a JPEG picture"},
      {"GIF89a"sv, "a GIF picture"},
      {"II*\0...."sv, "a TIFF picture"},
      {"<svg xmlns=\"x\"/>"sv, "an SVG picture"},
      {"\xef\xbb\xbf<?xml version=\"1.0\"?>\n<!-- drawn -->\n<svg/>"sv, "an SVG picture"},
      {"<?xml version=\"1.0\"?>\n<html/>"sv, "an XML document"},
      {"%PDF-1.7"sv, "a PDF document"},
      {"PK\x03\x04...."sv, "a ZIP archive"},
      {"NP_DEVICE:1\n"sv, "a device description"},
      {"\xff\xfe"
       "B\0X\0"sv,
       "a text in UTF-16"},
      {"\xef\xbb\xbf"
       "BX_DB:A\n"sv,
       "a text with a byte order mark before \"BX_DB:\""},
  };
  for (const auto& [bytes, kind] : kinds) {
    for (const content what : {content::database, content::grid}) {
      const check_report report = check_bytes(bytes, what);
      ASSERT_EQ(report.faults.size(), 1U) << kind;
      EXPECT_EQ(report.faults[0].text(), std::string("byte 0: not a BX_DB file: it is ") + kind);
      EXPECT_STREQ(report.foreign_kind, kind);
      EXPECT_TRUE(report.sections.empty());
    }
  }
}

TEST(FileKinds, APackedFileIsToldToBePackedWhenTheLibraryIsAsked) {
  const test::temporary_folder folder;
  const std::pair<std::string_view, const char*> packings[] = {{"\x1f\x8b\x08\0\0\0\0\0"sv, "gzip"},
                                                               {"\x28\xb5\x2f\xfd\x04\0"sv, "zstd"},
                                                               {"\x5a\x2a\x4d\x18\x02\0\0\0hi"sv, "zstd"},
                                                               {"\xfd"
                                                                "7zXZ\0\0"sv,
                                                                "xz"},
                                                               {"BZh91AY"sv, "bzip2"}};
  for (const auto& [bytes, packing] : packings) {
    const std::string name = folder.file("a.bxd");
    test::write_file(name, std::string(bytes));
    const check_report report = qelmodb::check_file(name.c_str(), content::database);
    ASSERT_EQ(report.faults.size(), 1U) << packing;
    EXPECT_EQ(report.faults[0].message,
              std::string("not a BX_DB file: it is packed by ") + packing + "; unpack it first");
    EXPECT_EQ(report.foreign_kind, std::string("packed by ") + packing);
    BX_DB db;
    check_report loading;
    EXPECT_FALSE(qelmodb::load_checked(db, name.c_str(), content::database, loading));
    EXPECT_EQ(loading.faults[0].message, report.faults[0].message);
  }
}

TEST(FileKinds, AnUnknownOneIsShownAndABXDBFileHasNone) {
  const check_report unknown = check_bytes("hello", content::database);
  EXPECT_EQ(unknown.faults[0].message, "not a BX_DB file: expected \"BX_DB:\", found \"hello\"");
  EXPECT_EQ(unknown.foreign_kind, nullptr);
  EXPECT_EQ(check_bytes(leaf_text, content::database).foreign_kind, nullptr);
}

TEST(FileKinds, TheOtherContentIsToldWithTheFirstError) {
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  for (const form as : {form::text, form::binary}) {
    const check_report grid = check_bytes(test::dumped(db, as, content::grid), content::database);
    ASSERT_FALSE(grid.loadable());
    EXPECT_TRUE(grid.is_other_content);
    EXPECT_EQ(grid.file_content, content::database);
    EXPECT_TRUE(first_error(grid).ends_with("; the file is a grid file, but a database file was expected"))
        << first_error(grid);
    const check_report database = check_bytes(test::dumped(db, as), content::grid);
    ASSERT_FALSE(database.loadable());
    EXPECT_TRUE(database.is_other_content);
    EXPECT_TRUE(first_error(database).ends_with("; the file is a database file, but a grid file was expected"));
  }
}

TEST(FileKinds, TheOtherContentIsNotToldOfFilesThatAreFaultyAsBoth) {
  const check_report cut = check_bytes(leaf_text.substr(0, 30), content::grid);
  EXPECT_FALSE(cut.is_other_content);
  EXPECT_EQ(cut.faults[0].message.find("was expected"), std::string::npos);
  EXPECT_FALSE(check_bytes(leaf_text, content::database).is_other_content);
}

TEST(FileKinds, ACheckThatWasCancelledLooksAtNothingElse) {
  int asked = 0;
  qelmodb::check_options options;
  options.report = [&asked](const qelmodb::progress&) {
    ++asked;
    return false;
  };
  const check_report cancelled = check_bytes(leaf_grid, content::database, options);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(cancelled.faults[0].message, "the check was cancelled");
}

TEST(FileKinds, WithoutEnoughBytesTheContentIsNotFound) {
  // Without the end of its last line a grid is whole.
  for (std::size_t length = 0; length + 1 < leaf_grid.size(); ++length) {
    EXPECT_EQ(qelmodb::find_content(leaf_text.substr(0, length)), std::nullopt) << length;
  }
  EXPECT_EQ(qelmodb::find_content(leaf_grid), content::grid);
  EXPECT_EQ(qelmodb::find_content(leaf_text), content::database);
  const std::string begun = "BX_DB:A\nBX_INSTANCE: \"T\" (0, 0) (9, 9)\n2\n";
  for (const char* next : {"", "B", "BX_"}) EXPECT_EQ(qelmodb::find_content(begun + next), std::nullopt) << next;
  EXPECT_EQ(qelmodb::find_content(begun + "BX_W"), content::database);
  EXPECT_EQ(qelmodb::find_content(begun + "BX_I"), content::grid);
  for (const char* bytes : {"BX_DB:B\n", "BX_DB:A\nhello\n1\nBX_INSTANCE:", "hello\n"}) {
    EXPECT_EQ(qelmodb::find_content(bytes), std::nullopt) << bytes;
  }
  EXPECT_EQ(qelmodb::find_content("BX_DB:C\n"), content::database);
}

TEST(FileKinds, ABinaryFileThatIsCutOffIsWhatItWas) {
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  for (const content what : {content::database, content::grid}) {
    const std::string whole = test::dumped(db, form::binary, what);
    EXPECT_EQ(qelmodb::find_content(whole.substr(0, whole.size() - 3)), what);
  }
}

TEST(FileKinds, DifferentNamesAreThoseOfTheTreeInEveryForm) {
  const test::separator kept('$');
  BX_DB db("TOP", 0, 0, 100, 50);
  test::fill_rich_database(db);
  for (const content what : {content::database, content::grid}) {
    for (const form as : {form::text, form::binary}) {
      const std::string bytes = test::dumped(db, as, what);
      qelmodb::check_options counting;
      counting.count_names = true;
      const check_report report = check_bytes(bytes, what, counting);
      ASSERT_TRUE(report.loadable());
      EXPECT_EQ(check_bytes(bytes, what).different_names, 0) << "unless it is asked for";
      BX_DB back;
      UT_MEMFILE file{std::string(bytes)};
      ASSERT_TRUE(qelmodb::load(back, file, what));
      EXPECT_EQ(report.different_names, qelmodb::measure(back).names) << to_string(as) << to_string(what);
      EXPECT_GT(report.different_names, 2);
    }
  }
}

}  // namespace
