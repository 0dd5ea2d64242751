// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The records of templates, byte by byte.
#include <gtest/gtest.h>

#include "../database/exposed.h"
#include "plain_compressed_file.h"

namespace {

using test::address_of;
using test::index_runs;
using test::lines_bytes;
using test::number;
using test::offset_runs;
using test::reference;
using test::word;

class TemplateRecords : public testing::Test {
 protected:
  void SetUp() override { BX_WIRE::resetCurrentXY(); }

  /// A file to read these bytes from, in which 1, 2 and 3 stand for names.
  UT_MEMFILE& file_of(const std::string& bytes) {
    file_ = std::make_unique<UT_MEMFILE>(std::string(bytes));
    for (std::size_t i = 0; i < std::size(names_); ++i) file_->fixtable().setnewaddr(i + 1, names_[i]);
    return *file_;
  }

  char names_[3][8] = {"ONE", "A$B$C", "THREE"};

 private:
  std::unique_ptr<UT_MEMFILE> file_;
};

// ---- ASS_TEMPLATE

TEST_F(TemplateRecords, ALayoutWithoutWiresTakesTenBytes) {
  ASS_TEMPLATE layout;
  layout.name = names_[0];
  UT_MEMFILE file;
  EXPECT_EQ(layout.writeme(&file), 1);
  EXPECT_EQ(file.bytes(), reference(address_of(names_[0])) + word(0));
}

TEST_F(TemplateRecords, WiresOfLayoutsAreCodedAgainstThoseBeforeAcrossRecords) {
  ASS_TEMPLATE first;
  first.name = names_[0];
  first.numwires = 2;
  first.wires = new BX_WIRE[2];
  first.wires[0].nodex = 0;
  first.wires[0].nodey = 0;
  first.wires[1].nodex = 127;
  first.wires[1].nodey = -129;
  ASS_TEMPLATE second;
  second.name = names_[2];
  second.numwires = 1;
  second.wires = new BX_WIRE[1];
  second.wires[0].nodex = 127;
  second.wires[0].nodey = 100000;
  UT_MEMFILE file;
  EXPECT_EQ(first.writeme(&file), 1);
  EXPECT_EQ(second.writeme(&file), 1);
  EXPECT_EQ(file.bytes(),
            reference(address_of(names_[0])) + word(2) + test::delta_wire_bytes(0, 3, 3, number(0) + number(0)) +
                test::delta_wire_bytes(0, 1, 2, std::string("\x7f") + word(-129)) + reference(address_of(names_[2])) +
                word(1) + test::delta_wire_bytes(0, 0, 3, number(100000)));
}

TEST_F(TemplateRecords, ALayoutIsReadWithBorrowedNamesThatAreCut) {
  ASS_TEMPLATE layout;
  UT_MEMFILE& file = file_of(reference(1) + word(2) + test::delta_wire_bytes(2, 3, 3, number(5) + number(-6)) +
                             test::delta_wire_bytes(3, 1, 0, "\x01"));
  const test::separator other('/');
  EXPECT_EQ(layout.readme(&file), 1);
  EXPECT_EQ(layout.name, names_[0]);
  ASSERT_EQ(layout.getnumwires(), 2);
  EXPECT_EQ(layout.getwire(0).name, names_[1]);
  EXPECT_STREQ(names_[1], "A") << "whatever the separator";
  EXPECT_TRUE(layout.getwire(0).nameborrowed);
  EXPECT_EQ(layout.getwire(0).nodex, 5);
  EXPECT_EQ(layout.getwire(0).nodey, -6);
  EXPECT_EQ(layout.getwire(1).name, names_[2]);
  EXPECT_EQ(layout.getwire(1).nodex, 6);
  EXPECT_EQ(layout.getwire(1).nodey, -6);
  EXPECT_TRUE(file.ok());
}

TEST_F(TemplateRecords, ALayoutThatIsCutOffKeepsItsWiresAndTheFileRemembers) {
  ASS_TEMPLATE layout;
  UT_MEMFILE& file = file_of(reference(1) + word(65535) + test::delta_wire_bytes(3, 3, 3, number(5) + number(6)));
  EXPECT_EQ(layout.readme(&file), 1);
  EXPECT_FALSE(file.ok());
  ASSERT_EQ(layout.getnumwires(), 65535);
  EXPECT_EQ(layout.getwire(0).nodey, 6);
  EXPECT_EQ(layout.getwire(65534).name, nullptr);
  EXPECT_EQ(layout.getwire(65534).nodex, BX_WIRE().nodex) << "not touched";
  // Reading again releases what is there.
  EXPECT_EQ(layout.readme(&file_of(reference(3) + word(0))), 1);
  EXPECT_EQ(layout.getnumwires(), 0);
  EXPECT_EQ(layout.wires, nullptr);
}

// ---- WIRE_TEMPLATE_SM

TEST_F(TemplateRecords, AnEmptyWireTemplateTakesEighteenBytes) {
  WIRE_TEMPLATE_SM wire;
  wire.name = names_[0];
  UT_MEMFILE file;
  EXPECT_EQ(wire.writeme(&file), 1);
  EXPECT_EQ(file.bytes(), reference(address_of(names_[0])) + word(0) + word(2) + word(0) + word(0) + word(0));
}

TEST_F(TemplateRecords, AWireTemplateIsWrittenAndReadFieldByField) {
  const std::uint16_t indices[] = {0, 1, 1};
  const BX_POINT first[] = {{1, -2}, {1, -2}, {3, 4}, NO_POINT};
  const BX_POINT second[] = {{-1, 70000}, {-1, 70000}, {-1, 70000}, {-1, 70000}};
  WIRE_TEMPLATE_SM wire;
  wire.name = names_[2];
  wire.absolute = 1;
  wire.span_dir = 1;
  wire.index_map.initiate(indices, 3);
  wire.num_offset_map = 2;
  wire.offset_maps = new RANGE_MAP<BX_POINT>[2];
  wire.offset_maps[0].initiate(first, 4);
  wire.offset_maps[1].initiate(second, 4);
  UT_MEMFILE written;
  EXPECT_EQ(wire.writeme(&written), 1);
  const std::string body = word(1) + word(1) + word(3) + index_runs({{0, 0}, {1, 1}}) + word(2) + word(4) +
                           offset_runs({{0, {1, -2}}, {2, {3, 4}}, {3, NO_POINT}}) + word(4) +
                           offset_runs({{0, {-1, 70000}}});
  EXPECT_EQ(written.bytes(), reference(address_of(names_[2])) + body);

  WIRE_TEMPLATE_SM back;
  UT_MEMFILE& file = file_of(reference(3) + body);
  EXPECT_EQ(back.readme(&file), 1);
  EXPECT_TRUE(file.ok());
  EXPECT_EQ(back.name, names_[2]);
  EXPECT_EQ(back.absolute, 1);
  EXPECT_EQ(back.span_dir, 1);
  EXPECT_EQ(back.index_map.size, 3);
  EXPECT_EQ(back.index_map.ranges, wire.index_map.ranges);
  ASSERT_EQ(back.num_offset_map, 2);
  for (int k = 0; k < 2; ++k) {
    EXPECT_EQ(back.offset_maps[k].size, 4);
    EXPECT_EQ(back.offset_maps[k].ranges, wire.offset_maps[k].ranges);
  }
}

TEST_F(TemplateRecords, OfAWireTemplateAnyAbsoluteIsOneAndTheLastOfEqualStartsCounts) {
  WIRE_TEMPLATE_SM wire;
  EXPECT_EQ(wire.readme(&file_of(reference(1) + word(256) + word(7) + word(9) + word(3) + word(4) + word(1) + word(2) +
                                 word(2) + word(4) + word(3) + word(0))),
            1);
  EXPECT_EQ(wire.absolute, 1);
  EXPECT_EQ(wire.span_dir, 7);
  EXPECT_EQ(wire.index_map.size, 9);
  EXPECT_EQ(wire.index_map.ranges, (std::map<std::uint16_t, std::uint16_t>{{2, 2}, {4, 3}}));
  EXPECT_EQ(wire.offset_maps, nullptr);
}

TEST_F(TemplateRecords, AnOffsetThatIsCutOffIsNone) {
  WIRE_TEMPLATE_SM wire;
  UT_MEMFILE& file = file_of(reference(1) + word(0) + word(2) + word(1) + index_runs({{0, 0}}) + word(65535) + word(1) +
                             word(60000) + word(0) + std::string("\x01\x02\x03"));
  EXPECT_EQ(wire.readme(&file), 1);
  EXPECT_FALSE(file.ok());
  ASSERT_EQ(wire.num_offset_map, 65535);
  EXPECT_EQ(wire.offset_maps[0].ranges, (std::map<std::uint16_t, BX_POINT>{{0, NO_POINT}}));
  EXPECT_TRUE(wire.offset_maps[1].ranges.empty());
}

TEST_F(TemplateRecords, ARunWhoseStartIsCutOffIsMissing) {
  WIRE_TEMPLATE_SM wire;
  UT_MEMFILE& file = file_of(reference(1) + word(0) + word(2) + word(9) + word(3) + word(4) + word(1) + "\x05");
  EXPECT_EQ(wire.readme(&file), 1);
  EXPECT_FALSE(file.ok());
  EXPECT_EQ(wire.index_map.ranges, (std::map<std::uint16_t, std::uint16_t>{{4, 1}}));
}

// ---- BASIC_ASS_TEMPLATE

TEST_F(TemplateRecords, AnEmptySetTakesSixteenBytes) {
  const BASIC_ASS_TEMPLATE set;
  UT_MEMFILE file;
  EXPECT_EQ(set.writeme_sm(&file), 1);
  EXPECT_EQ(file.bytes(), std::string(16, '\0'));
}

TEST_F(TemplateRecords, ASetIsWrittenAndReadFieldByField) {
  BX_DB db("D", 0, 0, 100, 100);
  BX_INSTANCE* left = test::add(db, "BASIC_ASS", -5, 0, 0, 8);
  test::add_wire(*left, "A", 0, 3);
  test::add_wire(*left, "B", -4, 3);
  BX_INSTANCE* right = test::add(db, "BASIC_ASS", 5, 0, 9, 8);
  test::add_wire(*right, "B", 6, 3);
  db.compress();
  const BASIC_ASS_TEMPLATE& set = db.get_basic_ass_tmp();
  UT_MEMFILE written;
  EXPECT_EQ(set.writeme_sm(&written), 1);
  auto bytes = [](std::uint64_t name, std::uint64_t a, std::uint64_t b) {
    const std::string lists = word(2) + word(2) + word(1) + word(0) + word(1) + word(1);
    const std::string wire_a = reference(a) + word(0) + word(2) + word(1) + index_runs({{0, 0}}) + word(1) + word(2) +
                               offset_runs({{0, {5, 3}}, {1, NO_POINT}});
    const std::string wire_b = reference(b) + word(0) + word(2) + word(1) + index_runs({{0, 0}}) + word(1) + word(2) +
                               offset_runs({{0, {1, 3}}});
    return reference(name) + lists + word(2) + wire_a + wire_b + lines_bytes({{-5, 0}, {5, 1}}) + lines_bytes({{0, 0}});
  };
  EXPECT_EQ(written.bytes(),
            bytes(address_of(left->name), address_of(left->wires[0].name), address_of(left->wires[1].name)));
  EXPECT_NE(written.bytes().find(std::string("\xfb\xff\xff\xff\x00\x00", 6)), std::string::npos);

  BASIC_ASS_TEMPLATE back;
  UT_MEMFILE& file = file_of(bytes(1, 2, 3));
  EXPECT_EQ(back.readme_sm(&file), 1);
  EXPECT_TRUE(file.ok());
  EXPECT_EQ(back.getname(), names_[0]);
  ASSERT_EQ(back.num_wirelist, 2);
  EXPECT_EQ(back.getnumwires(0), 2);
  EXPECT_EQ(back.getnumwires(1), 1);
  EXPECT_EQ(back.getwirename_sm(0, 0), names_[1]);
  EXPECT_STREQ(back.getwirename_sm(0, 0), "A$B$C") << "names of wire templates are not cut";
  EXPECT_EQ(back.getwirename_sm(1, 0), names_[2]);
  EXPECT_EQ(back.colmap, (std::map<bx_long, std::uint16_t>{{-5, 0}, {5, 1}}));
  EXPECT_EQ(back.rowmap, (std::map<bx_long, std::uint16_t>{{0, 0}}));
  EXPECT_EQ(back.ins_points, nullptr);
  EXPECT_EQ(back.restore_wire({5, 0}, 1, 0), BX_POINT(6, 3));
  ASSERT_NE(back.ins_points, nullptr) << "made by the first restore";
  EXPECT_EQ(back.ins_points[1][0], BX_POINT(5, 0));
  EXPECT_EQ(back.restore_wire({-5, 0}, 0, 0), BX_POINT(0, 3));
}

TEST_F(TemplateRecords, ASetThatIsCutOffAnywhereCanBeDestroyedAndReadOnceMore) {
  const std::string wire = reference(2) + word(0) + word(2) + word(1) + index_runs({{0, 0}}) + word(1) + word(1) +
                           offset_runs({{0, {1, 1}}});
  const std::string whole = reference(1) + word(3) + word(2) + word(0) + word(1) + word(0) + word(0) + word(0) +
                            word(1) + wire + lines_bytes({{7, 0}}) + lines_bytes({{8, 0}});
  BASIC_ASS_TEMPLATE again;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    BASIC_ASS_TEMPLATE set;
    UT_MEMFILE& file = file_of(whole.substr(0, length));
    EXPECT_EQ(set.readme_sm(&file), 1);
    EXPECT_FALSE(file.ok()) << length;
    EXPECT_EQ(again.readme_sm(&file_of(whole)), 1);
    EXPECT_EQ(again.num_wirelist, 3);
    EXPECT_EQ(again.restore_wire({7, 8}, 2, 0), BX_POINT(8, 9));
  }
}

TEST_F(TemplateRecords, ListsBehindTheEndOfTheFileHaveNoWires) {
  BASIC_ASS_TEMPLATE set;
  EXPECT_EQ(set.readme_sm(&file_of(reference(1) + word(3) + word(1) + word(60000) + word(60000) + word(7) + word(8))),
            1);
  ASSERT_EQ(set.num_wirelist, 3);
  EXPECT_EQ(set.getnumwires(0), 1);
  EXPECT_EQ(set.getnumwires(1), 60000);
  EXPECT_EQ(set.wirelists[1][0], 8);
  EXPECT_EQ(set.wirelists[1][59999], 0);
  EXPECT_EQ(set.getnumwires(2), 0);
}

TEST_F(TemplateRecords, ASetThatIsReadOnceMoreForgetsItsCorners) {
  const auto set_at = [](bx_long x) {
    return reference(1) + word(1) + word(1) + word(0) + word(1) + reference(2) + word(0) + word(2) + word(1) +
           index_runs({{0, 0}}) + word(1) + word(1) + offset_runs({{0, {1, 1}}}) + lines_bytes({{x, 0}}) +
           lines_bytes({{0, 0}});
  };
  BASIC_ASS_TEMPLATE set;
  EXPECT_EQ(set.readme_sm(&file_of(set_at(10))), 1);
  EXPECT_EQ(set.restore_wire({10, 0}, 0, 0), BX_POINT(11, 1));
  set.colmap.clear();
  EXPECT_EQ(set.readme_sm(&file_of(set_at(50))), 1);
  EXPECT_EQ(set.ins_points, nullptr);
  EXPECT_EQ(set.restore_wire({50, 0}, 0, 0), BX_POINT(51, 1));
}

TEST_F(TemplateRecords, MoreColumnsThanARecordCanCountAreLeftOut) {
  BASIC_ASS_TEMPLATE set;
  for (int x = 0; x < 65538; ++x) set.colmap.emplace(x, std::uint16_t{7});
  UT_MEMFILE file;
  EXPECT_EQ(set.writeme_sm(&file), 1);
  EXPECT_EQ(file.bytes(), std::string(12, '\0') + lines_bytes({{0, 7}, {1, 7}}) + word(0));
}

}  // namespace
