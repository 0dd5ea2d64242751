// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The checker on compressed files: a fault planted in every field.
#include <gtest/gtest.h>

#include "plain_compressed_file.h"

namespace {

using qelmodb::check_report;
using qelmodb::severity;
using test::box_bytes;
using test::content;
using test::number;
using test::reference;
using test::word;

/// A sound file, part by part: a root and two switch matrices in two columns and one row; wires "A", in both, and "B",
/// only in the second.
struct parts {
  std::string first_line = test::compressed_line;
  std::string names = test::table_bytes({{1, "TOP"}, {2, "BASIC_ASS"}, {3, "A"}, {4, "B"}});
  std::string set_name = reference(2);
  std::string list_count = word(2);
  std::string list_sizes = word(1) + word(2);
  std::string lists = word(0) + word(0) + word(1);
  std::string wire_count = word(2);
  std::string a_name = reference(3);
  std::string a_absolute = word(0);
  std::string a_span = word(2);
  std::string a_index_size = word(1);
  std::string a_index_runs = test::index_runs({{0, 0}});
  std::string a_map_count = word(1);
  std::string a_map_size = word(2);
  std::string a_map_runs = test::offset_runs({{0, {1, 2}}, {1, {3, 4}}});
  std::string b = reference(4) + word(0) + word(1) + word(2) + test::index_runs({{0, 0}, {1, 1}}) + word(2) + word(1) +
                  test::offset_runs({{0, NO_POINT}}) + word(1) + test::offset_runs({{0, {5, 6}}});
  std::string columns = test::lines_bytes({{10, 0}, {20, 1}});
  std::string rows = test::lines_bytes({{-5, 0}});
  std::string template_count = number(1);
  std::string template_name = reference(1);
  std::string template_wires = word(2);
  std::string wire_a = test::delta_wire_bytes(3, 3, 3, number(1) + number(2));
  std::string wire_b = test::delta_wire_bytes(4, 1, 2, std::string("\x01") + word(300));
  std::string root_box = box_bytes({0, -9, 30, 9});
  std::string root_template = word(0);
  std::string root_children = number(2);
  std::string first_box = box_bytes({10, -5, 12, 0});
  std::string first_template = word(0x8000);
  std::string first_children = number(0);
  std::string second_box = box_bytes({20, -5, 22, 0});
  std::string second_template = word(0x8001);
  std::string second_children = number(0);
  std::string rest;

  std::vector<const std::string*> all() const {
    return {&first_line,
            &names,
            &set_name,
            &list_count,
            &list_sizes,
            &lists,
            &wire_count,
            &a_name,
            &a_absolute,
            &a_span,
            &a_index_size,
            &a_index_runs,
            &a_map_count,
            &a_map_size,
            &a_map_runs,
            &b,
            &columns,
            &rows,
            &template_count,
            &template_name,
            &template_wires,
            &wire_a,
            &wire_b,
            &root_box,
            &root_template,
            &root_children,
            &first_box,
            &first_template,
            &first_children,
            &second_box,
            &second_template,
            &second_children,
            &rest};
  }

  std::string bytes() const { return upto(nullptr); }
  std::string upto(const std::string* part) const {
    std::string joined;
    for (const std::string* each : all()) {
      if (each == part) break;
      joined += *each;
    }
    return joined;
  }
};

/// What the checker finds: "severity offset-in-part message [path]" for each fault, offsets counted from a part on.
std::string faults_of(const parts& file, const std::string& from) {
  const check_report report = qelmodb::check_bytes(file.bytes(), content::database);
  const auto start = static_cast<std::int64_t>(file.upto(&from).size());
  std::string text;
  for (const qelmodb::fault& found : report.faults) {
    EXPECT_EQ(found.line, 0);
    text += std::string(text.empty() ? "" : "; ") + to_string(found.level) + " " +
            std::to_string(found.offset - start) + " " + found.message +
            (found.path.empty() ? "" : " [" + found.path + "]");
  }
  return text;
}

bool loads(const parts& file) {
  BX_DB db;
  return test::loaded(db, file.bytes());
}

class CompressedChecker : public testing::Test {
 protected:
  parts file;
};

TEST_F(CompressedChecker, FindsNothingInASoundFileAndCountsWhatItStandsFor) {
  const check_report report = qelmodb::check_bytes(file.bytes(), content::database);
  EXPECT_TRUE(report.faults.empty());
  EXPECT_EQ(report.file_form, test::form::compressed);
  EXPECT_EQ(report.names, 4);
  EXPECT_EQ(report.instances, 3);
  EXPECT_EQ(report.wires, 2 + 1 + 2);
  EXPECT_EQ(report.depth, 1);
  EXPECT_EQ(report.dollar_wires, 0);
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, file.bytes()));
  EXPECT_EQ(qelmodb::measure(db).wires, 5);
  EXPECT_EQ(db.getinstance(1)->getwire("B", nullptr)->nodex, 25);
}

TEST_F(CompressedChecker, TellsTheSectionsOfTheFile) {
  const check_report report = qelmodb::check_bytes(file.bytes(), content::database);
  const std::vector<std::pair<std::string, const std::string*>> wanted = {{"first line", &file.names},
                                                                          {"name table", &file.set_name},
                                                                          {"wire lists", &file.wire_count},
                                                                          {"wire templates", &file.columns},
                                                                          {"columns and rows", &file.template_count},
                                                                          {"templates", &file.root_box},
                                                                          {"tree", nullptr}};
  ASSERT_EQ(report.sections.size(), wanted.size());
  std::size_t start = 0;
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    const std::size_t end = file.upto(wanted[i].second).size();
    EXPECT_EQ(report.sections[i].name, wanted[i].first);
    EXPECT_EQ(report.sections[i].offset, static_cast<std::int64_t>(start));
    EXPECT_EQ(report.sections[i].bytes, static_cast<std::int64_t>(end - start)) << wanted[i].first;
    start = end;
  }
}

TEST_F(CompressedChecker, FindsEveryPlaceWhereTheFileIsCutOff) {
  const std::string whole = file.bytes();
  for (std::size_t length = 8; length < whole.size(); ++length) {
    const check_report report = qelmodb::check_bytes(whole.substr(0, length), content::database);
    ASSERT_EQ(report.errors, 1) << length;
    EXPECT_LE(report.faults.back().offset, static_cast<std::int64_t>(length));
  }
}

TEST_F(CompressedChecker, FindsBytesBehindTheTree) {
  file.rest = "xy";
  EXPECT_EQ(faults_of(file, file.rest), "error 0 2 bytes stand behind the last record, which nothing reads");
}

TEST_F(CompressedChecker, FindsReferencesThatNoNameExplains) {
  const std::string message = "the name reference 0000000000000009 is not in the name table";
  file.set_name = reference(9);
  EXPECT_EQ(faults_of(file, file.set_name), "error 0 " + message);
  EXPECT_FALSE(loads(file));
  file = parts();
  file.a_name = reference(9);
  EXPECT_EQ(faults_of(file, file.a_name), "error 0 wire template 0: " + message);
  EXPECT_FALSE(loads(file));
  file = parts();
  file.template_name = reference(9);
  EXPECT_EQ(faults_of(file, file.template_name), "error 0 template 0: " + message)
      << "the root may not be nameless here";
  EXPECT_FALSE(loads(file));
  file = parts();
  file.wire_b = test::delta_wire_bytes(9, 0, 0, "");
  EXPECT_EQ(faults_of(file, file.wire_b).substr(0, 75), "error 0 template 0: " + message.substr(0, 55));
}

TEST_F(CompressedChecker, TakesReferenceZeroForAMissingName) {
  file.template_name = reference(0);
  EXPECT_EQ(faults_of(file, file.rest), "");
  EXPECT_TRUE(loads(file));
}

TEST_F(CompressedChecker, FindsListsThatLeadBeyondTheWireTemplates) {
  file.lists = word(0) + word(0) + word(2);
  EXPECT_EQ(faults_of(file, file.lists), "error 4 a wire list has the wire template 2, but there are 2");
  EXPECT_FALSE(loads(file));
}

TEST_F(CompressedChecker, FindsEveryIndexThatLeadsNowhere) {
  file.lists = word(3) + word(0) + word(7);
  file.a_index_runs = test::index_runs({{0, 2}, {1, 9}});
  EXPECT_EQ(faults_of(file, file.lists),
            "error 0 a wire list has the wire template 3, but there are 2; "
            "error 4 a wire list has the wire template 7, but there are 2; "
            "error 26 wire template 0: the index map leads to offset map 2, but there are 1; "
            "warning 28 wire template 0: the index map has a run that starts at 1, beyond its size of 1; "
            "error 30 wire template 0: the index map leads to offset map 9, but there are 1");
}

// What is then taken for columns and rows would put maps before the fault in the wrong.
TEST_F(CompressedChecker, DoesNotJudgeSizesOfMapsBehindAFaultOfAWireTemplate) {
  file.columns = word(2) + number(20) + word(0) + number(20) + word(1);
  EXPECT_EQ(faults_of(file, file.columns).substr(0, 55), "error 8 the column at xmin = 20 stands behind that at 2");
}

TEST_F(CompressedChecker, FindsCountsThatTheBytesDoNotJustify) {
  file.list_count = word(60000);
  EXPECT_EQ(faults_of(file, file.list_count).substr(0, 45), "error 0 the wire list count is 60000, but the");
  file = parts();
  file.list_sizes = word(60000) + word(2);
  EXPECT_EQ(faults_of(file, file.list_sizes).substr(0, 58),
            "error 0 the wire lists up to here have 60000 wires, but th");
  file = parts();
  file.wire_count = word(60000);
  EXPECT_EQ(faults_of(file, file.wire_count).substr(0, 49), "error 0 the wire template count is 60000, but the");
  file = parts();
  file.a_map_count = word(60000);
  EXPECT_EQ(faults_of(file, file.a_map_count).substr(0, 65),
            "error 0 wire template 0: the offset map count is 60000, but the 2");
  file = parts();
  file.template_count = number(60000);
  EXPECT_EQ(faults_of(file, file.template_count).substr(0, 45), "error 0 the template count is 60000, but the ");
  file.template_count = number(-1);
  EXPECT_EQ(faults_of(file, file.template_count), "error 0 the template count is -1");
  file = parts();
  file.template_wires = word(60000);
  EXPECT_EQ(faults_of(file, file.template_wires).substr(0, 53),
            "error 0 template 0: the wire count is 60000, but the ");
  file = parts();
  file.root_children = number(60000);
  EXPECT_EQ(faults_of(file, file.root_children).substr(0, 42), "error 0 the child count is 60000, but the ");
}

TEST_F(CompressedChecker, WarnsOfFlagsAndDirectionsThatAreReadAsOthers) {
  file.a_absolute = word(2);
  EXPECT_EQ(faults_of(file, file.a_absolute),
            "warning 0 wire template 0: the flag \"absolute\" is 2, which is read as 1");
  EXPECT_TRUE(loads(file));
  file = parts();
  file.a_span = word(3);
  EXPECT_EQ(faults_of(file, file.a_span), "warning 0 wire template 0: the span direction is 3, which is read as 2");
  EXPECT_TRUE(loads(file));
  file = parts();
  file.wire_b = test::delta_wire_bytes(4, 16 * 3 + 1, 0, "\x01");
  EXPECT_EQ(faults_of(file, file.wire_b).substr(0, 68),
            "warning 8 template 0: the byte of codes is C4; its upper four bits a");
}

TEST_F(CompressedChecker, FindsMapsWhoseSizesAreNotThoseOfTheGrid) {
  file.a_index_size = word(2);
  EXPECT_EQ(faults_of(file, file.a_index_size), "error 0 a range map has a size of 2, but there are 1 rows");
  file = parts();
  file.a_map_size = word(3);
  EXPECT_EQ(faults_of(file, file.a_map_size), "error 0 a range map has a size of 3, but there are 2 columns");
  file = parts();
  file.a_span = word(1);
  EXPECT_EQ(faults_of(file, file.a_index_size),
            "error 0 a range map has a size of 1, but there are 2 columns; "
            "error 10 a range map has a size of 2, but there are 1 rows");
}

TEST_F(CompressedChecker, FindsRunsThatDoNotCoverTheirMap) {
  file.a_index_runs = word(0);
  EXPECT_EQ(faults_of(file, file.a_index_size), "error 0 wire template 0: the index map has a size of 1, but no runs");
  file = parts();
  file.a_map_runs = test::offset_runs({{1, {1, 2}}});
  EXPECT_EQ(faults_of(file, file.a_map_runs),
            "error 2 wire template 0: offset map 0 has no run for 0; the first starts at 1");
  file = parts();
  file.a_map_runs = test::offset_runs({{0, {1, 2}}, {2, {1, 2}}});
  EXPECT_EQ(faults_of(file, file.a_map_runs),
            "warning 12 wire template 0: offset map 0 has a run that starts at 2, beyond its size of 2");
  EXPECT_TRUE(loads(file));
  file = parts();
  file.a_map_runs = word(2) + word(0) + number(1) + number(1) + word(0) + number(2) + number(2);
  EXPECT_EQ(faults_of(file, file.a_map_runs),
            "error 12 wire template 0: the run that starts at 0 stands behind one that starts at 0");
  file = parts();
  file.a_index_runs = test::index_runs({{0, 1}});
  EXPECT_EQ(faults_of(file, file.a_index_runs),
            "error 4 wire template 0: the index map leads to offset map 1, but there are 1");
  EXPECT_FALSE(loads(file));
}

TEST_F(CompressedChecker, FindsColumnsAndRowsOutOfOrder) {
  file.columns = word(2) + number(20) + word(0) + number(10) + word(1);
  EXPECT_EQ(faults_of(file, file.columns), "error 8 the column at xmin = 10 stands behind that at 20");
  file = parts();
  file.columns = test::lines_bytes({{10, 1}, {20, 0}});
  EXPECT_EQ(faults_of(file, file.columns),
            "error 6 the column at xmin = 10 has the number 1 instead of 0; "
            "error 12 the column at xmin = 20 has the number 0 instead of 1");
  file = parts();
  file.rows = test::lines_bytes({{-5, 1}});
  EXPECT_EQ(faults_of(file, file.rows), "error 6 the row at ymin = -5 has the number 1 instead of 0");
}

TEST_F(CompressedChecker, FindsInstancesThatReferToNothing) {
  file.root_template = word(1);
  EXPECT_EQ(faults_of(file, file.root_template), "error 0 the instance refers to template 1, but there are 1");
  EXPECT_FALSE(loads(file));
  file = parts();
  file.second_template = word(0x8002);
  EXPECT_EQ(faults_of(file, file.second_template),
            "error 0 the switch matrix refers to wire list 2, but there are 2 [TOP/BASIC_ASS]");
  EXPECT_FALSE(loads(file));
}

TEST_F(CompressedChecker, FindsSwitchMatricesOutsideOfTheGrid) {
  file.first_box = box_bytes({11, -5, 12, 0});
  EXPECT_EQ(faults_of(file, file.first_box),
            "error 0 no column of the switch matrices begins at x = 11 [TOP/BASIC_ASS]");
  file.first_box = box_bytes({11, -6, 12, 0});
  EXPECT_EQ(faults_of(file, file.first_box),
            "error 0 no column of the switch matrices begins at x = 11 [TOP/BASIC_ASS]; "
            "error 4 no row of the switch matrices begins at y = -6 [TOP/BASIC_ASS]");
  // Without wires a place is not asked for.
  file = parts();
  file.list_sizes = word(0) + word(2);
  file.lists = word(0) + word(1);
  file.first_box = box_bytes({11, -6, 12, 0});
  EXPECT_EQ(faults_of(file, file.first_box), "");
  EXPECT_TRUE(loads(file));
}

TEST_F(CompressedChecker, LooksAtOrderAndRectanglesAsInOtherForms) {
  std::swap(file.wire_a, file.wire_b);
  EXPECT_EQ(faults_of(file, file.wire_b),
            "warning 0 template 0: the wire stands behind \"B\": wires are not in name order [A]");
  file = parts();
  std::swap(file.first_box, file.second_box);
  EXPECT_EQ(faults_of(file, file.second_box).substr(0, 52), "warning 0 the child at (10, -5) stands behind one at");
  file = parts();
  file.root_box = box_bytes({0, -9, -1, 9});
  EXPECT_EQ(faults_of(file, file.root_box).substr(0, 63),
            "warning 0 the rectangle (0, -9) (-1, 9) is not normalised [TOP]");
}

TEST_F(CompressedChecker, CountsTheWiresWhoseNamesWillBeCut) {
  file.names = test::table_bytes({{1, "TOP"}, {2, "BASIC_ASS"}, {3, "A$1"}, {4, "B"}});
  EXPECT_EQ(qelmodb::check_bytes(file.bytes(), content::database).dollar_wires, 1);
}

}  // namespace
