// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Instance templates, references to them, and restoring from them.
#include <gtest/gtest.h>

#include "qelmocompress.h"
#include "qelmotmplt.h"
#include "template_faults.h"

namespace {

using test::add;
using test::add_wire;
using test::fault_of;

struct open_references : BX_INSTANCE {
  using BX_INSTANCE::set_basic_ass_tmpltidx;
  using BX_INSTANCE::set_non_basic_ass_tmpltidx;
};

void refer(BX_INSTANCE& inst, bool basic, int index) {
  const auto set = basic ? &open_references::set_basic_ass_tmpltidx : &open_references::set_non_basic_ass_tmpltidx;
  (inst.*set)(index);
}

std::string overflow(int index) {
  return "template index " + std::to_string(index) +
         " overflowed in BX_DB (max is 32767) [BXDB] database/qelmodb/i/qelmodb 1";
}

class InstanceTemplates : public testing::Test {
 protected:
  BX_INSTANCE* put(const char* name, bx_long x, bx_long y, std::initializer_list<BX_POINT> nodes = {}) {
    BX_INSTANCE* inst = add(db, name, x, y, x + 10, y + 10);
    char wire[] = "a";
    for (const BX_POINT& node : nodes) {
      add_wire(*inst, wire, node.x, node.y);
      ++wire[0];
    }
    return inst;
  }

  const ASS_TEMPLATE& tmplt_of(const BX_INSTANCE& inst) { return *db.get_non_basic_ass_tmp(inst.tmpltidx()); }

  BX_DB db{"D", 0, 0, 100, 100};
};

TEST_F(InstanceTemplates, ReferenceHoldsKindAndIndex) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  EXPECT_EQ(fault_of([&] {
              refer(inst, true, 0);
              EXPECT_EQ(inst.is_basic_ass(), 1);
              EXPECT_EQ(inst.tmpltidx(), 0);
              refer(inst, true, 32767);
              EXPECT_EQ(inst.tmplt, 0xffff);
              refer(inst, false, 32767);
              EXPECT_EQ(inst.is_basic_ass(), 0);
              EXPECT_EQ(inst.tmpltidx(), 32767);
            }),
            "");
}

TEST_F(InstanceTemplates, IndexBeyondFifteenBitsIsAnOverflow) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  EXPECT_EQ(fault_of([&] { refer(inst, true, 32768); }), overflow(32768));
  EXPECT_EQ(fault_of([&] { refer(inst, false, 32768); }), overflow(32768));
  EXPECT_EQ(inst.tmplt, 0x8000) << "the low 16 bits as given";
  EXPECT_EQ(fault_of([&] { refer(inst, true, -1); }), overflow(-1));
  EXPECT_EQ(fault_of([&] { refer(inst, false, -1); }), overflow(-1));
}

TEST_F(InstanceTemplates, EqualLayoutsAtDifferentPlacesShareOneTemplate) {
  BX_INSTANCE* first = put("T", 0, 0, {{1, 2}, {3, 4}});
  BX_INSTANCE* second = put("T", 20, 30, {{21, 32}, {23, 34}});
  BX_INSTANCE* moved = put("T", 40, 30, {{41, 32}, {43, 35}});
  EXPECT_EQ(first->create_template(), 0);
  EXPECT_EQ(second->create_template(), 0);
  EXPECT_EQ(moved->create_template(), 1);
  const ASS_TEMPLATE& made = *db.get_non_basic_ass_tmp(0);
  EXPECT_EQ(made.name, first->name);
  ASSERT_EQ(made.getnumwires(), 2);
  EXPECT_EQ(made.getwire(1).nodex, 3);
  EXPECT_EQ(made.getwire(1).nodey, 4);
  EXPECT_EQ(made.getwire(1).name, first->wires[1].name);
  EXPECT_TRUE(made.getwire(1).nameborrowed);
}

TEST_F(InstanceTemplates, WireNamesAreNotComparedAndRestoringGivesThoseOfTheFirst) {
  BX_INSTANCE* first = put("T", 0, 0, {{1, 2}});
  BX_INSTANCE* second = add(db, "T", 20, 0, 30, 10);
  add_wire(*second, "other", 21, 2);
  EXPECT_EQ(first->create_template(), 0);
  EXPECT_EQ(second->create_template(), 0);
  db.compress();
  second->restore();
  EXPECT_EQ(second->wires[0].name, first->wires[0].name);
}

TEST_F(InstanceTemplates, OfInstancesWithoutWiresHoldTheNameAlone) {
  BX_INSTANCE* first = put("T", 0, 0);
  BX_INSTANCE* second = put("T", 5, 7);
  BX_INSTANCE* other = put("U", 5, 7);
  EXPECT_EQ(first->create_template(), 0);
  EXPECT_EQ(second->create_template(), 0);
  EXPECT_EQ(other->create_template(), 1);
  EXPECT_EQ(db.get_non_basic_ass_tmp(0)->getnumwires(), 0);
}

TEST_F(InstanceTemplates, DifferencesWrapAround) {
  BX_INSTANCE* low = add(db, "T", INT32_MIN, INT32_MIN, 0, 0);
  add_wire(*low, "a", INT32_MAX, 0);
  BX_INSTANCE* high = add(db, "T", 1, 0, 2, 2);
  add_wire(*high, "a", 0, INT32_MIN);
  EXPECT_EQ(low->create_template(), high->create_template());
  db.compress();
  high->restore();
  EXPECT_EQ(high->wires[0].nodex, 0);
  EXPECT_EQ(high->wires[0].nodey, INT32_MIN);
}

TEST_F(InstanceTemplates, DestroyedLeaveTheNamesAlone) {
  BX_INSTANCE* inst = put("T", 0, 0, {{1, 2}});
  inst->create_template();
  delete db.asstemplates.back();
  db.asstemplates.pop_back();
  EXPECT_STREQ(inst->name, "T");
  EXPECT_STREQ(inst->wires[0].name, "a");
}

TEST_F(InstanceTemplates, AssignmentSharesTheWires) {
  put("T", 0, 0, {{1, 2}})->create_template();
  ASS_TEMPLATE copy;
  copy = *db.get_non_basic_ass_tmp(0);
  EXPECT_EQ(copy.wires, db.get_non_basic_ass_tmp(0)->wires);
  EXPECT_EQ(copy.getnumwires(), 1);
  copy.wires = nullptr;  // only one of the two may be destroyed with them
}

TEST_F(InstanceTemplates, WithoutADatabaseThereAreNone) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  EXPECT_EQ(inst.create_template(), -1);
  inst.compress();
  EXPECT_EQ(inst.tmplt, 0);
}

// ---- compressing a database

TEST_F(InstanceTemplates, RootWithoutDatabaseIsLeftAlone) {
  const test::temporary_folder folder;
  const std::string name = folder.file("grid.bxg");
  test::write_file(name, "BX_DB:A\nBX_INSTANCE: \"R\" (0, 0) (9, 9)\n1\nBX_INSTANCE: \"BASIC_ASS\" (0, 0) (1, 1)\n0\n");
  BX_DB grid;
  ASSERT_EQ(grid.loadgrid(name.c_str()), 1);
  ASSERT_EQ(grid.top, nullptr);
  EXPECT_EQ(test::fault_of([&] { grid.compress(); }), "");
  EXPECT_EQ(grid.basicasstemplate, nullptr);
  EXPECT_TRUE(grid.asstemplates.empty());
  EXPECT_EQ(grid.numinst, 0);
  EXPECT_EQ(grid.getinstance(0)->tmplt, 0);
  EXPECT_EQ(grid.dumpcompress(folder.file("compressed.bxd").c_str(), false), 0);
  EXPECT_TRUE(qelmodb::compression_objections(grid).empty());
}

TEST_F(InstanceTemplates, CompressionCountsAllButTheRootAndRefersEach) {
  BX_INSTANCE* a = put("A", 0, 0, {{1, 2}});
  BX_INSTANCE* b = put("A", 0, 20, {{1, 22}});
  BX_INSTANCE* like = put("BASIC_ASS_LIKE", 0, 40);
  db.numinst = 0;
  db.numbasicass = 0;
  db.compress();
  EXPECT_EQ(db.numinst, 3);
  EXPECT_EQ(db.numbasicass, 0);
  EXPECT_STREQ(tmplt_of(db).name, "D");
  EXPECT_EQ(db.tmpltidx(), 0) << "the root comes first";
  EXPECT_EQ(a->tmpltidx(), b->tmpltidx());
  EXPECT_EQ(like->is_basic_ass(), 0) << "names are compared whole";
  EXPECT_EQ(a->wires.getcount(), 1) << "compressing takes nothing away";
}

TEST_F(InstanceTemplates, CompressingTwiceAddsNoTemplatesAndGoesOnCounting) {
  put("A", 0, 0, {{1, 2}});
  put("BASIC_ASS", 0, 20, {{1, 22}});
  db.numinst = 0;
  db.numbasicass = 0;
  db.compress();
  const std::size_t templates = db.asstemplates.size();
  db.compress();
  EXPECT_EQ(db.asstemplates.size(), templates);
  EXPECT_EQ(db.numinst, 4);
  EXPECT_EQ(db.numbasicass, 2);
  EXPECT_EQ(db.get_basic_ass_tmp().num_wirelist, 1);
}

TEST_F(InstanceTemplates, WithoutSwitchMatricesTheSetStaysEmpty) {
  put("A", 0, 0);
  db.compress();
  ASSERT_NE(db.basicasstemplate, nullptr);
  EXPECT_EQ(db.get_basic_ass_tmp().name, nullptr);
  EXPECT_EQ(db.get_basic_ass_tmp().num_wirelist, 0);
  EXPECT_TRUE(db.get_basic_ass_tmp().colmap.empty());
}

TEST_F(InstanceTemplates, MoreThan32768EndTheProcessWithAnOverflow) {
  for (bx_long i = 0; i < 32768; ++i) put("T", 0, i, {{i, 0}});
  EXPECT_EQ(fault_of([&] { db.compress(); }), overflow(32768)) << "with that of the root they are 32769";
  EXPECT_EQ(db.asstemplates.size(), 32769U);
}

TEST_F(InstanceTemplates, ClientsOwnClassesAreCompressedByTheirOwnOperation) {
  class counted : public BX_INSTANCE {
   public:
    using BX_INSTANCE::BX_INSTANCE;
    void compress() override {
      ++calls;
      BX_INSTANCE::compress();
    }
    int calls = 0;
  };
  auto* own = new counted("OWN", 0, 0, 10, 10);
  own->addinstance(new BX_INSTANCE("IN", 0, 0, 1, 1));
  db.addinstance(own);
  db.numinst = 0;
  db.compress();
  EXPECT_EQ(own->calls, 1);
  EXPECT_EQ(db.numinst, 2);
  EXPECT_STREQ(tmplt_of(*own->getinstance(0)).name, "IN");
}

TEST_F(InstanceTemplates, NestingOfAHundredThousandLevelsIsCompressedAndRestored) {
  BX_INSTANCE root("N", 0, 0, 1, 1);
  BX_INSTANCE* inner = new BX_INSTANCE("N", 0, 0, 1, 1);
  for (int i = 0; i < 100000; ++i) {
    auto* outer = new BX_INSTANCE("N", 0, 0, 1, 1);
    outer->instances.a_add(&inner);
    inner = outer;
  }
  db.addinstance(inner);
  db.numinst = 0;
  db.compress();
  EXPECT_EQ(db.numinst, 100001);
  EXPECT_EQ(db.asstemplates.size(), 2U);
  db.restore();
  EXPECT_STREQ(inner->name, "N");
}

TEST_F(InstanceTemplates, RestoringKeepsTheWiresBeyondThoseOfTheTemplate) {
  BX_INSTANCE* inst = put("T", 5, 5, {{6, 7}});
  db.compress();
  add_wire(*inst, "z", 1, 1);
  inst->wires[0].nodex = 0;
  inst->restore();
  ASSERT_EQ(inst->wires.getcount(), 2);
  EXPECT_EQ(inst->wires[0].nodex, 6);
  EXPECT_STREQ(inst->wires[1].name, "z");
  EXPECT_TRUE(inst->nameborrowed);
}

TEST_F(InstanceTemplates, ReferenceThatLeadsNowhereLeavesTheInstanceAsItIs) {
  BX_INSTANCE* bad = put("BAD", 0, 0, {{1, 1}});
  BX_INSTANCE* worse = put("WORSE", 0, 20, {{1, 1}});
  BX_INSTANCE* good = put("GOOD", 0, 40, {{1, 41}});
  db.compress();
  bad->tmplt = 32767;
  worse->tmplt = 0xffff;
  good->wires[0].nodex = 77;
  EXPECT_EQ(fault_of([&] { db.restore(); }), "");
  EXPECT_STREQ(bad->name, "BAD");
  EXPECT_STREQ(worse->name, "WORSE");
  EXPECT_EQ(good->wires[0].nodex, 1);
}

}  // namespace
