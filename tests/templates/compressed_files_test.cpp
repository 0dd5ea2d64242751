// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Compressed files: dumping, loading, and what comes back.
#include <gtest/gtest.h>

#include <iostream>

#include "plain_compressed_file.h"
#include "qelmocompress.h"
#include "random_device.h"
#include "template_faults.h"

namespace {

using qelmodb::content;
using qelmodb::form;
using test::add;
using test::add_wire;
using test::compressed_line;
using test::number;
using test::reference;
using test::skeleton_bytes;
using test::table_bytes;
using test::word;

/// The empty set, and no layouts.
const std::string no_templates = std::string(16, '\0') + number(0);

std::string compressed(BX_DB& db) {
  qelmodb::intern_root_name(db);
  db.compress();
  return test::dumped(db, form::compressed);
}

/// A device with switch matrices, a tile without wires, and one that stands twice.
void fill(BX_DB& db) {
  add_wire(db, "GLOBAL", 3, 4);
  for (const bx_long x : {0, 10, 20}) {
    for (const bx_long y : {0, 8}) {
      BX_INSTANCE* tile = add(db, "TILE", x, y, x + 9, y + 7);
      add_wire(*tile, "IN", x + 1, y + 1);
      add_wire(*tile, "OUT", x + 2, y - 100000);
      BX_INSTANCE* matrix = add(*tile, "BASIC_ASS", x, y, x + 4, y + 7);
      add_wire(*matrix, "LONG", 5, y + 2);
      if (x != 20) add_wire(*matrix, "OUT", x + 3, y + 3);
    }
  }
  add(db, "EMPTY", 40, 0, 49, 7);
}

class CompressedFiles : public testing::Test {
 protected:
  CompressedFiles() { fill(db); }

  std::string file(const std::string& name) const { return folder_.file(name); }

  BX_DB db{"D", 0, 0, 100, 100};

 private:
  test::temporary_folder folder_;
};

TEST_F(CompressedFiles, HoldExactlyTheBytesOfNamesTemplatesAndSkeleton) {
  db.compress();
  const std::string name = file("d.bxd");
  ASSERT_EQ(db.dumpcompress(name.c_str(), false), 1);
  EXPECT_EQ(test::read_file(name), test::plain_compressed_file(db).bytes);
}

TEST_F(CompressedFiles, GiveBackTheTree) {
  const std::string name = file("d.bxd");
  qelmodb::intern_root_name(db);
  db.compress();
  ASSERT_EQ(db.dumpcompress(name.c_str(), false), 1);
  BX_DB back;
  EXPECT_EQ(back.load(name.c_str()), 1);
  EXPECT_TRUE(qelmodb::same_tree(db, back, content::database));
  EXPECT_EQ(test::text_of(db), test::text_of(back));
  bx_walk(static_cast<BX_INSTANCE&>(back), [&](BX_INSTANCE& inst, bx_long) {
    EXPECT_EQ(inst.top, &back);
    EXPECT_TRUE(inst.nameborrowed);
    for (const BX_WIRE& wire : inst.wires) EXPECT_TRUE(wire.nameborrowed);
    return true;
  });
  EXPECT_EQ(back.names.getcount(), db.names.getcount());
}

TEST_F(CompressedFiles, LeaveEachLeafTwentyTwoBytes) {
  const std::size_t before = compressed(db).size();
  add(db, "EMPTY", 50, 0, 59, 7);
  EXPECT_EQ(compressed(db).size(), before + 22 + 22) << "the leaf, and the column instance that holds it";
}

TEST_F(CompressedFiles, OfADatabaseThatWasNotCompressedAreNotWritten) {
  const std::string name = file("d.bxd");
  EXPECT_EQ(db.dumpcompress(name.c_str(), false), 0);
  EXPECT_FALSE(std::filesystem::exists(name));
  UT_MEMFILE memory;
  EXPECT_FALSE(qelmodb::dump(db, memory, form::compressed, content::database));
  db.compress();
  EXPECT_FALSE(qelmodb::dump(db, memory, form::compressed, content::grid));
  EXPECT_EQ(memory.bytes(), "");
}

TEST_F(CompressedFiles, HaveNoTextForm) {
  const std::string name = file("d.bxd");
  db.compress();
  testing::internal::CaptureStdout();
  const unsigned char result = db.dumpcompress(name.c_str(), true);
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Dump compressed ascii file has not been implemented yet!\n");
  EXPECT_EQ(result, 0);
  ASSERT_TRUE(std::filesystem::exists(name));
  EXPECT_EQ(test::read_file(name), "");
}

TEST_F(CompressedFiles, ThatCannotBeOpenedGiveFalse) {
  db.compress();
  EXPECT_EQ(db.dumpcompress(file("no/folder/d.bxd").c_str(), false), 0);
  testing::internal::CaptureStdout();
  EXPECT_EQ(db.dumpcompress(file("no/folder/d.bxd").c_str(), true), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(db.dumpcompress("/dev/full", false), 0);
}

// ---- the root's name

TEST_F(CompressedFiles, OfARootNamedByItsConstructorLoadNamelessAndFalse) {
  db.compress();
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, test::dumped(db, form::compressed)));
  EXPECT_EQ(back.name, nullptr);
  EXPECT_EQ(back.getnuminstances(), db.getnuminstances()) << "all else is there";
  EXPECT_STREQ(back.getinstance(0)->name, "TILE");
}

TEST_F(CompressedFiles, HaveNoEntryForTheRootsNameOfItsOwn) {
  const std::string bytes = compressed(db);
  EXPECT_EQ(bytes.substr(8, 4), number(db.names.getcount()));
  EXPECT_STREQ(db.name, "D");
  BX_DB binary;
  ASSERT_TRUE(test::loaded(binary, test::dumped(db, form::binary)));
  EXPECT_EQ(binary.names.getcount(), db.names.getcount() + 1);
  BX_DB back;
  ASSERT_TRUE(test::loaded(back, bytes));
  EXPECT_STREQ(back.name, "D");
}

// ---- edges

TEST_F(CompressedFiles, WithoutInstanceTemplatesGoOnWithTheSkeleton) {
  BX_DB bare;
  bare.basicasstemplate = new BASIC_ASS_TEMPLATE;
  UT_MEMFILE memory;
  ASSERT_TRUE(qelmodb::dump(bare, memory, form::compressed, content::database));
  const std::string bytes = compressed_line + number(0) + no_templates + skeleton_bytes({0, 0, 0, 0}, 0);
  EXPECT_EQ(memory.bytes(), bytes);
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, bytes)) << "the root refers to a template that does not exist";
}

TEST_F(CompressedFiles, WithoutSwitchMatricesComeBack) {
  BX_DB plain("P", 0, 0, 9, 9);
  add(plain, "TILE", 0, 1, 2, 3);
  BX_DB back;
  EXPECT_TRUE(test::loaded(back, compressed(plain)));
  EXPECT_TRUE(qelmodb::same_tree(plain, back, content::database));
  ASSERT_NE(back.basicasstemplate, nullptr);
  EXPECT_EQ(back.basicasstemplate->name, nullptr);
}

TEST_F(CompressedFiles, CutNamesOfLayoutsAtTheFirstDollarWhateverTheSeparator) {
  BX_DB dollars("D", 0, 0, 99, 99);
  add_wire(*add(dollars, "TILE", 0, 0, 9, 9), "A$B$C", 1, 1);
  add_wire(*add(dollars, "BASIC_ASS", 0, 20, 9, 29), "X$Y", 1, 21);
  const std::string bytes = compressed(dollars);
  const test::separator kept('$');
  BX_DB back;
  ASSERT_TRUE(test::loaded(back, bytes));
  EXPECT_STREQ(back.getinstance(0)->wires[0].name, "A");
  EXPECT_STREQ(back.getinstance(1)->wires[0].name, "X$Y") << "names of switch matrices' wires are not cut";
  // The table changed with the string: the new text is found in it.
  EXPECT_EQ(test::intern(back, "A"), back.getinstance(0)->wires[0].name);
}

TEST_F(CompressedFiles, LoadedIntoAFullDatabaseReplaceItAndItsTemplates) {
  const std::string bytes = compressed(db);
  BX_DB other("OTHER", 0, 0, 9, 9);
  fill(other);
  add(other, "MORE", 60, 0, 61, 1);
  other.compress();
  ASSERT_TRUE(test::loaded(other, bytes));
  EXPECT_TRUE(qelmodb::same_tree(db, other, content::database));
  EXPECT_EQ(other.asstemplates.size(), db.asstemplates.size());
  ASSERT_TRUE(test::loaded(other, bytes));
  EXPECT_TRUE(qelmodb::same_tree(db, other, content::database));
}

TEST_F(CompressedFiles, CanBeCompressedAgainToTheSameTemplates) {
  const std::string bytes = compressed(db);
  BX_DB back;
  ASSERT_TRUE(test::loaded(back, bytes));
  back.compress();
  EXPECT_EQ(back.asstemplates.size(), db.asstemplates.size());
  EXPECT_EQ(back.basicasstemplate->num_wirelist, db.basicasstemplate->num_wirelist);
  BX_DB third;
  ASSERT_TRUE(test::loaded(third, test::dumped(back, form::compressed)));
  EXPECT_TRUE(qelmodb::same_tree(db, third, content::database));
}

TEST_F(CompressedFiles, OfTwoDatabasesOneAfterTheOtherDoNotMixNames) {
  for (int round = 0; round < 20; ++round) {
    BX_DB first("D", 0, 0, 9, 9);
    fill(first);
    BX_DB back;
    ASSERT_TRUE(test::loaded(back, compressed(first)));
    EXPECT_TRUE(qelmodb::same_tree(first, back, content::database));
    BX_DB other("E", 0, 0, 9, 9);
    for (const bx_long x : {0, 10}) {
      BX_INSTANCE* matrix = add(other, "BASIC_ASS", x, 0, x + 4, 7);
      // The same strings are at other addresses and in another order here.
      for (const char* name : {"Z", "OUT", "LONG", "A"}) add_wire(*matrix, name, x + name[0], 5);
    }
    BX_DB other_back;
    ASSERT_TRUE(test::loaded(other_back, compressed(other)));
    EXPECT_TRUE(qelmodb::same_tree(other, other_back, content::database));
  }
}

TEST_F(CompressedFiles, ConvertTheHierarchyWhenTheEnvironmentAsksForIt) {
  BX_DB wide("W", 0, 0, 9, 9);
  for (int y = 0; y < 50; ++y) add(wide, "TILE", 0, y, 5, y);
  const std::string name = file("w.bxd");
  test::write_file(name, compressed(wide));
  const test::environment large("KRT_LARGE_DESIGN", "0");
  BX_DB back;
  ASSERT_EQ(back.load(name.c_str()), 1);
  EXPECT_LT(back.getnuminstances(), 50);
}

TEST_F(CompressedFiles, OfDeepTreesNeedNoStack) {
  constexpr int levels = 100000;
  BX_DB deep("D", 0, 0, 1, 1);
  BX_INSTANCE* lowest = &deep;
  for (int i = 0; i < levels; ++i) lowest = add(*lowest, "L", 0, 0, 1, 1);
  const std::string bytes = compressed(deep);
  BX_DB back;
  ASSERT_TRUE(test::loaded(back, bytes));
  EXPECT_EQ(qelmodb::measure(back).depth, levels);
  EXPECT_TRUE(qelmodb::same_tree(deep, back, content::database));
}

// ---- derived classes

struct own_tile : BX_INSTANCE {
  using BX_INSTANCE::BX_INSTANCE;
  unsigned char writecompress(UT_PTRFILE* file) override {
    ++asked;
    file->write("own", 3);
    return good ? 1 : 0;
  }
  int asked = 0;
  bool good = true;
};

TEST_F(CompressedFiles, AreWrittenByChildrenOfDerivedClassesThemselves) {
  BX_DB small("S", 0, 0, 9, 9);
  auto* own = new own_tile("OWN", 0, 0, 1, 1);
  small.addinstance(own);
  add(*own, "INNER", 0, 0, 1, 1);
  add(small, "TILE", 0, 5, 1, 6);
  small.compress();
  UT_MEMFILE memory;
  ASSERT_TRUE(qelmodb::dump(small, memory, form::compressed, content::database));
  EXPECT_EQ(own->asked, 1);
  const std::string tail = number(2) + "own" + skeleton_bytes({0, 5, 1, 6}, small.getinstance(1)->tmplt);
  EXPECT_EQ(memory.bytes().substr(memory.bytes().size() - tail.size()), tail);
  own->good = false;
  const std::string name = file("s.bxd");
  EXPECT_EQ(small.dumpcompress(name.c_str(), false), 0);
  EXPECT_FALSE(std::filesystem::exists(name));
}

// ---- readcompress by itself

TEST_F(CompressedFiles, ReadByThemselvesReplaceTemplatesAndStartAfresh) {
  db.compress();
  UT_MEMFILE written;
  EXPECT_EQ(db.writecompress(&written), 1);  // leaves a running position behind
  BX_DB back;
  back.compress();
  char* name = test::intern(back, "A$B");
  const std::string bytes = std::string(16, '\0') + number(1) + reference(1) + word(1) +
                            test::delta_wire_bytes(1, 1, 0, "\x07") + skeleton_bytes({10, 20, 11, 21}, 0);
  UT_MEMFILE file{std::string(bytes)};
  file.fixtable().setnewaddr(1, name);
  EXPECT_EQ(back.readcompress(&file), 1);
  ASSERT_EQ(back.asstemplates.size(), 1U);
  EXPECT_EQ(back.name, nullptr) << "names and wires are restore's";
  back.restore();
  EXPECT_EQ(back.name, name);
  ASSERT_EQ(back.getnumwires(), 1);
  EXPECT_EQ(back.wires[0].nodex, 17);
  EXPECT_EQ(back.wires[0].nodey, 20);
  EXPECT_EQ(test::intern(back, "A"), name) << "the table knows that the string was cut";
}

// ---- damaged files

TEST_F(CompressedFiles, CutOffAnywhereGiveFalse) {
  const std::string bytes = compressed(db);
  for (std::size_t length = 8; length < bytes.size(); ++length) {
    BX_DB back;
    EXPECT_FALSE(test::loaded(back, bytes.substr(0, length))) << length;
  }
}

TEST_F(CompressedFiles, ThatLackAColumnEndTheProcessAsDocumented) {
  const std::string bytes = compressed(db);
  const std::string columns = test::lines_bytes({{0, 0}, {10, 1}, {20, 2}});
  const std::size_t at = bytes.find(columns);
  ASSERT_NE(at, std::string::npos);
  std::string damaged = bytes;
  damaged[at + 2 + 6] = 11;  // the column at x = 10 is now at 11
  BX_DB back;
  bool loaded = true;
  EXPECT_EQ(test::fault_of([&] { loaded = test::loaded(back, damaged); }).substr(0, 48),
            "65535 is out of range (0, 2), something is wrong");
  EXPECT_FALSE(qelmodb::check_bytes(damaged, content::database).loadable());
}

TEST_F(CompressedFiles, WithOffsetMapsOfNoSizeEndTheProcessAsDocumented) {
  const std::string map = word(0) + test::offset_runs({{0, {1, 1}}});
  const std::string wire =
      reference(2) + word(0) + word(2) + word(1) + test::index_runs({{0, 0}}) + word(2) + map + map;
  const std::string set = reference(1) + word(1) + word(1) + word(0) + word(1) + wire + test::lines_bytes({{10, 0}}) +
                          test::lines_bytes({{20, 0}});
  const std::string bytes = compressed_line + table_bytes({{1, "BASIC_ASS"}, {2, "A"}}) + set + number(1) +
                            reference(1) + word(0) +
                            skeleton_bytes({0, 0, 9, 9}, 0, {skeleton_bytes({10, 20, 11, 21}, 0x8000)});
  BX_DB back;
  EXPECT_EQ(test::fault_of([&] { test::loaded(back, bytes); }).substr(0, 45),
            "0 is out of range (0, -1), something is wrong");
  EXPECT_FALSE(qelmodb::check_bytes(bytes, content::database).loadable());
}

TEST_F(CompressedFiles, WithReferencesThatLeadNowhereLoadTheRestAndGiveFalse) {
  const std::string bytes = compressed_line + table_bytes({{1, "ROOT"}, {2, "TILE"}, {3, "W"}}) +
                            std::string(16, '\0') + number(2) + reference(1) + word(0) + reference(2) + word(1) +
                            test::delta_wire_bytes(3, 3, 3, number(1) + number(2)) +
                            skeleton_bytes({0, 0, 9, 9}, 0,
                                           {skeleton_bytes({1, 0, 2, 9}, 1), skeleton_bytes({3, 0, 4, 9}, 2),
                                            skeleton_bytes({5, 0, 6, 9}, 0x8000), skeleton_bytes({7, 0, 8, 9}, 1)});
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, bytes));
  ASSERT_EQ(back.getnuminstances(), 4);
  EXPECT_STREQ(back.name, "ROOT");
  EXPECT_STREQ(back.getinstance(0)->name, "TILE");
  EXPECT_EQ(back.getinstance(1)->name, nullptr);
  EXPECT_EQ(back.getinstance(2)->name, nullptr);
  EXPECT_STREQ(back.getinstance(3)->wires[0].name, "W");
  EXPECT_EQ(back.getinstance(3)->wires[0].nodex, 8);
}

TEST_F(CompressedFiles, WithEntriesBeyondTheWireTemplatesKeepTheOtherWires) {
  const std::string wire = reference(2) + word(0) + word(2) + word(1) + test::index_runs({{0, 0}}) + word(1) + word(1) +
                           test::offset_runs({{0, {1, 1}}});
  const std::string beyond = reference(3) + word(0) + word(2) + word(1) + test::index_runs({{0, 5}}) + word(0);
  const std::string set = reference(1) + word(1) + word(3) + word(7) + word(1) + word(0) + word(2) + wire + beyond +
                          test::lines_bytes({{10, 0}}) + test::lines_bytes({{20, 0}});
  const std::string bytes = compressed_line + table_bytes({{1, "BASIC_ASS"}, {2, "A"}, {3, "B"}}) + set + number(1) +
                            reference(1) + word(0) +
                            skeleton_bytes({0, 0, 9, 9}, 0, {skeleton_bytes({10, 20, 11, 21}, 0x8000)});
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, bytes));
  const BX_INSTANCE& matrix = *back.getinstance(0);
  ASSERT_EQ(matrix.getnumwires(), 3);
  EXPECT_EQ(matrix.wires[0].name, nullptr) << "no such wire template";
  EXPECT_EQ(matrix.wires[1].name, nullptr) << "no such offset map";
  EXPECT_STREQ(matrix.wires[2].name, "A");
  EXPECT_EQ(matrix.wires[2].nodex, 11);
  EXPECT_EQ(matrix.wires[2].nodey, 21);
}

TEST_F(CompressedFiles, ThatPromiseBillionsOfTemplatesOrChildrenEndWithTheirBytes) {
  const std::string start = compressed_line + number(0) + std::string(16, '\0');
  BX_DB back;
  EXPECT_FALSE(test::loaded(back, start + number(INT32_MAX)));
  EXPECT_FALSE(test::loaded(back, start + number(INT32_MAX) + reference(0) + word(65535)));
  EXPECT_TRUE(back.asstemplates.empty()) << "the one that was cut off is not kept";
  EXPECT_FALSE(test::loaded(back, start + number(-1) + test::box_bytes({0, 0, 1, 1}) + word(0) + number(INT32_MAX)));
  EXPECT_EQ(back.getnuminstances(), 1) << "the child that was cut off stays attached";
}

// ---- random devices

class RandomCompressedFiles : public testing::TestWithParam<unsigned> {};

TEST_P(RandomCompressedFiles, HoldThePlainBytesAndComeBackThroughAllForms) {
  test::device_maker maker(GetParam());
  for (int round = 0; round < 500; ++round) {
    const std::unique_ptr<BX_DB> db = maker.next();
    const std::string bytes = compressed(*db);
    ASSERT_EQ(bytes, test::plain_compressed_file(*db).bytes);
    const std::string text = test::dumped(*db, form::text);
    // Text to binary to compressed to text.
    BX_DB from_text;
    ASSERT_TRUE(test::loaded(from_text, text));
    BX_DB from_binary;
    ASSERT_TRUE(test::loaded(from_binary, test::dumped(from_text, form::binary)));
    const std::string again = compressed(from_binary);
    const auto losses = qelmodb::find_compression_losses(from_binary);
    ASSERT_EQ(losses.total(), losses.count(qelmodb::loss::renamed_wire)) << "like shapes with other names";
    const qelmodb::check_report report = qelmodb::check_bytes(again, content::database);
    ASSERT_TRUE(report.loadable()) << report.faults[0].text();
    BX_DB back;
    ASSERT_TRUE(test::loaded(back, again));
    ASSERT_EQ(losses.total() == 0, test::dumped(back, form::text) == text) << "round " << round;
    ASSERT_EQ(report.instances, qelmodb::measure(back).instances);
    ASSERT_EQ(report.wires, qelmodb::measure(back).wires);
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomCompressedFiles, testing::Range(1U, 9U));

}  // namespace
