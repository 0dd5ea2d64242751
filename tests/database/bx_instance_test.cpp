// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <type_traits>

#include "exposed.h"

namespace {

using test::add;
using test::add_wire;
using test::child_names;
using test::rectangle;
using test::wire_names;
using names = std::vector<std::string>;

TEST(Instance, CornersInAnyOrderAreStoredNormalised) {
  EXPECT_EQ(rectangle(BX_INSTANCE("A", 9, 8, -1, -2)), "-1 9 -2 8");
  EXPECT_EQ(rectangle(BX_INSTANCE("A", 9, -2, -1, 8)), "-1 9 -2 8");
  EXPECT_EQ(rectangle(BX_INSTANCE("A", -1, -2, 9, 8)), "-1 9 -2 8");
  EXPECT_EQ(rectangle(BX_INSTANCE("A", INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN)),
            "-2147483648 2147483647 -2147483648 2147483647");
}

TEST(Instance, StartsAloneAndEmpty) {
  char text[] = "TILE";
  const BX_INSTANCE inst(text, 0, 0, 1, 1);
  text[0] = 'X';
  EXPECT_STREQ(inst.getname(), "TILE");
  EXPECT_EQ(inst.getnumwires(), 0);
  EXPECT_EQ(inst.getnuminstances(), 0);
  EXPECT_EQ(inst.top, nullptr);
  EXPECT_FALSE(inst.nameborrowed);
  EXPECT_EQ(inst.tmplt, 0);
}

TEST(Instance, MadeWithoutNameHasNone) {
  BX_INSTANCE inst(nullptr, 0, 0, 1, 1);
  EXPECT_EQ(inst.getname(), nullptr);
  add(inst, nullptr, 5, 0, 6, 1);
  EXPECT_EQ(child_names(inst), names{"BXD__"});
}

TEST(Instance, KeepsItsFieldsInTheOrderThatClientsRelyOn) {
  static_assert(std::is_same_v<decltype(BX_INSTANCE::tmplt), std::uint16_t>);
  const BX_INSTANCE inst("A", 0, 0, 1, 1);
  const void* const fields[] = {&inst.xmin, &inst.xmax,  &inst.ymin,      &inst.ymax, &inst.nameborrowed,
                                &inst.name, &inst.wires, &inst.instances, &inst.top,  &inst.tmplt};
  for (std::size_t i = 1; i < std::size(fields); ++i) EXPECT_LT(fields[i - 1], fields[i]) << i;
}

TEST(Instance, TemplateReferenceSplitsIntoKindAndIndex) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  EXPECT_EQ(inst.is_basic_ass(), 0);
  EXPECT_EQ(inst.tmpltidx(), 0);
  inst.tmplt = 0x7fff;
  EXPECT_EQ(inst.is_basic_ass(), 0);
  EXPECT_EQ(inst.tmpltidx(), 32767);
  inst.tmplt = 0x8000;
  EXPECT_EQ(inst.is_basic_ass(), 1);
  EXPECT_EQ(inst.tmpltidx(), 0);
  inst.tmplt = 0x8005;
  EXPECT_EQ(inst.is_basic_ass(), 1);
  EXPECT_EQ(inst.tmpltidx(), 5);
}

TEST(Instance, SeparatorIsNulAtFirstAndSharedByAll) {
  const test::separator kept('\0');
  BX_INSTANCE a("A", 0, 0, 1, 1);
  BX_DB b;
  EXPECT_EQ(a.getseparator(), '\0');
  a.setseparator('#');
  EXPECT_EQ(b.getseparator(), '#');
  EXPECT_EQ(test::open_instance::separator, '#');
}

TEST(Instance, WireIsCopiedAndStaysTheCallers) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  BX_WIRE wire("W", 3, 4);
  inst.addwire(&wire);
  EXPECT_STREQ(wire.getname(), "W");
  ASSERT_EQ(inst.getnumwires(), 1);
  EXPECT_NE(inst.getwire(0)->name, wire.name);
  EXPECT_STREQ(inst.getwire(0)->getname(), "W");
  EXPECT_EQ(inst.getwire(0)->getnodex(), 3);
  EXPECT_EQ(inst.getwire(0)->getnodey(), 4);
  EXPECT_FALSE(inst.getwire(0)->nameborrowed);
}

TEST(Instance, CopyOfABorrowedWireIsTheInstancesOwn) {
  char text[] = "B";
  BX_WIRE wire;
  wire.setname(text);
  wire.nameborrowed = true;
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  inst.addwire(&wire);
  EXPECT_FALSE(inst.getwire(0)->nameborrowed);
  EXPECT_NE(inst.getwire(0)->name, text);
}

TEST(Instance, WiresAreSortedByNameAsUnsignedBytes) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  test::add_wires(inst, {"b", "a", "\xe9", "Z", "a1", "", "a$"});
  EXPECT_EQ(wire_names(inst), (names{"", "Z", "a", "a$", "a1", "b", "\xe9"}));
}

TEST(Instance, WireWithoutNameSortsAsAnEmptyOne) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  test::add_wires(inst, {"a", nullptr, ""});
  EXPECT_EQ(inst.getwire(0)->name, nullptr);
  EXPECT_STREQ(inst.getwire(1)->name, "");
  EXPECT_STREQ(inst.getwire(2)->name, "a");
}

TEST(Instance, AddingTwoWiresOfTheSameNameKeepsBothInTheOrderOfAdding) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  add_wire(inst, "W", 1, 0);
  add_wire(inst, "V", 2, 0);
  add_wire(inst, "W", 3, 0);
  add_wire(inst, "W", 4, 0);
  EXPECT_EQ(wire_names(inst), (names{"V", "W", "W", "W"}));
  EXPECT_EQ(inst.getwire(1)->getnodex(), 1);
  EXPECT_EQ(inst.getwire(2)->getnodex(), 3);
  EXPECT_EQ(inst.getwire(3)->getnodex(), 4);
}

TEST(Instance, AnOwnWireCanBeAddedOnceMore) {
  BX_INSTANCE inst("A", 0, 0, 1, 1);
  add_wire(inst, "W", 1, 2);
  for (int i = 0; i < 50; ++i) inst.addwire(inst.getwire(0));
  EXPECT_EQ(inst.getnumwires(), 51);
  for (const BX_WIRE& wire : inst.wires) EXPECT_STREQ(wire.getname(), "W");
}

TEST(Instance, ChildWithTheParentsLeftEdgeIsAttachedDirectlyAndWidensTheOtherEdges) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  BX_INSTANCE* child = add(inst, "C", 0, -5, 20, 30);
  EXPECT_EQ(inst.getinstance(0), child);
  EXPECT_EQ(rectangle(inst), "0 20 -5 30");
  add(inst, "D", 0, 1, 2, 3);
  EXPECT_EQ(rectangle(inst), "0 20 -5 30");
}

TEST(Instance, LeftEdgeStaysWhenTheChildsLowerEdgeLiesBelowIt) {
  BX_INSTANCE inst("P", 7, 7, 10, 10);
  add(inst, "C", 7, -100, 8, 8);
  EXPECT_EQ(rectangle(inst), "7 10 -100 10");
}

TEST(Instance, FirstChildWithANewLeftEdgeMakesAColumnAndTheNextOneJoinsIt) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  BX_INSTANCE* first = add(inst, "FIRST", 5, 2, 6, 3);
  ASSERT_EQ(inst.getnuminstances(), 1);
  BX_INSTANCE* column = inst.getinstance(0);
  EXPECT_STREQ(column->getname(), "BXD__FIRST");
  EXPECT_EQ(rectangle(*column), "5 6 2 3");
  ASSERT_EQ(column->getnuminstances(), 1);
  EXPECT_EQ(column->getinstance(0), first);

  BX_INSTANCE* other = add(inst, "OTHER", 5, -4, 9, 1);
  ASSERT_EQ(inst.getnuminstances(), 1);
  EXPECT_EQ(child_names(*column), (names{"OTHER", "FIRST"}));
  EXPECT_EQ(column->getinstance(0), other);
  EXPECT_EQ(rectangle(*column), "5 9 -4 3");
}

TEST(Instance, ParentIsNotWidenedByWhatItsColumnsTakeIn) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "FAR", 50, 50, 60, 60);
  add(inst, "LEFT", -50, -50, -40, -40);
  EXPECT_EQ(rectangle(inst), "0 10 0 10");
  EXPECT_EQ(child_names(inst), (names{"BXD__LEFT", "BXD__FAR"}));
}

TEST(Instance, ColumnIsTheFirstChildWithThatLeftEdge) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "A", 5, 5, 6, 6);
  BX_INSTANCE* plain = inst.getinstance(0);
  add(inst, "B", 5, 1, 6, 2);
  EXPECT_EQ(plain->getnuminstances(), 2);
  EXPECT_EQ(inst.getnuminstances(), 1);
}

TEST(Instance, TwoChildrenAtExactlyTheSamePositionAreBothKeptNewestFirst) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "OLD", 0, 3, 1, 4);
  add(inst, "NEW", 0, 3, 1, 4);
  add(inst, "LOW", 0, 2, 1, 4);
  add(inst, "NEWEST", 0, 3, 9, 9);
  EXPECT_EQ(child_names(inst), (names{"LOW", "NEWEST", "NEW", "OLD"}));
}

TEST(Instance, ColumnOfADatabaseBelongsToIt) {
  BX_DB db("DB", 0, 0, 10, 10);
  BX_INSTANCE* inst = add(db, "A", 5, 5, 6, 6);
  BX_INSTANCE* column = db.getinstance(0);
  EXPECT_EQ(column->top, &db);
  EXPECT_EQ(inst->top, &db);
  EXPECT_EQ(column->name, test::intern(db, "BXD__A"));
  EXPECT_EQ(inst->name, test::intern(db, "A"));
}

TEST(Instance, NullChildBeforeTheColumnMakesANewOneAttachDirectly) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  *inst.instances.getaddr(0) = nullptr;
  BX_INSTANCE* child = add(inst, "C", 5, 1, 20, 30);
  ASSERT_EQ(inst.getnuminstances(), 2);
  EXPECT_EQ(inst.getinstance(0), nullptr);
  EXPECT_EQ(inst.getinstance(1), child);
  EXPECT_EQ(rectangle(inst), "0 20 0 30");
}

TEST(Instance, ColumnBeforeANullChildIsStillFound) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "A", 5, 1, 6, 2);
  *inst.instances.getaddr(1) = nullptr;
  add(inst, "B", 5, 3, 6, 4);
  ASSERT_EQ(inst.getnuminstances(), 2);
  EXPECT_EQ(child_names(*inst.getinstance(0)), (names{"A", "B"}));
}

TEST(Instance, ChildTakenOutByAClientLeavesANullThatMakesTheNextOneAttachDirectly) {
  BX_INSTANCE inst("P", 0, 0, 10, 10);
  add(inst, "A", 5, 1, 6, 2);
  add(inst, "B", 7, 1, 8, 2);
  delete inst.instances[0];
  inst.instances[0] = nullptr;
  BX_INSTANCE* child = add(inst, "C", 9, 0, 9, 9);
  ASSERT_EQ(inst.getnuminstances(), 3);
  EXPECT_EQ(inst.getinstance(2), child);
}

TEST(Instance, DirectAttachmentBesideANullMovesTheLeftEdgeOnlyWhenItIsGreaterThanTheChildsLowerEdge) {
  BX_INSTANCE inst("P", 4, 4, 10, 10);
  *inst.instances.getaddr(0) = nullptr;
  add(inst, "C", 6, 5, 7, 7);
  EXPECT_EQ(inst.xmin, 4);
  add(inst, "D", 9, 3, 9, 9);
  EXPECT_EQ(inst.xmin, 9);
}

TEST(Instance, ColumnWhoseLeftEdgeMovedWithItsOwnConversionIsFoundAtItsNewEdge) {
  BX_INSTANCE inst("P", -1, 0, 20, 10);
  add(inst, "A", 5, 0, 6, 1);
  add(inst, "B", 10, 0, 11, 1);
  BX_INSTANCE* moved = inst.getinstance(1);
  add(*moved, "LEFT", 0, 0, 1, 1);
  moved->convert_hierarchy();
  ASSERT_EQ(moved->xmin, 0);
  add(inst, "C", 0, 5, 1, 6);
  EXPECT_EQ(inst.getnuminstances(), 2);
  EXPECT_EQ(moved->getnuminstances(), 3);
}

TEST(Instance, ColumnWhoseLeftEdgeMovedIsFoundAlsoAmongManyChildren) {
  BX_INSTANCE inst("P", 0, 0, 400, 10);
  for (bx_long x = 1; x <= 400; ++x) add(inst, "C", x, 0, x, 1);
  BX_INSTANCE* moved = inst.getinstance(300);
  add(*moved, "LEFT", -5, 0, 1, 1);
  moved->convert_hierarchy();
  ASSERT_EQ(moved->xmin, -5);
  add(inst, "C", -5, 5, 1, 6);
  EXPECT_EQ(inst.getnuminstances(), 400);
  EXPECT_EQ(moved->getnuminstances(), 3);
}

TEST(Instance, ColumnsAreFoundAmongManyChildren) {
  BX_INSTANCE inst("P", -1, 0, 400, 10);
  for (bx_long x = 0; x < 1000; ++x) add(inst, "C", x * 7919 % 1000, 0, 2000, 1);
  for (bx_long x = 0; x < 1000; ++x) add(inst, "D", x, 0, 2000, 1);
  ASSERT_EQ(inst.getnuminstances(), 1000);
  for (bx_long x = 0; x < 1000; ++x) {
    EXPECT_EQ(inst.getinstance(x)->xmin, x);
    EXPECT_EQ(child_names(*inst.getinstance(x)), (names{"D", "C"}));
  }
}

TEST(Instance, AssignmentSharesEverything) {
  BX_INSTANCE inst("A", 1, 2, 3, 4);
  add_wire(inst, "W");
  add(inst, "C", 1, 2, 3, 4);
  inst.tmplt = 0x8003;
  alignas(BX_INSTANCE) unsigned char room[sizeof(BX_INSTANCE)];
  auto* copy = new (room) BX_INSTANCE(nullptr, 0, 0, 0, 0);
  *copy = inst;
  EXPECT_EQ(rectangle(*copy), "1 3 2 4");
  EXPECT_EQ(copy->name, inst.name);
  EXPECT_EQ(copy->getnumwires(), 1);
  EXPECT_EQ(copy->getwire(0), inst.getwire(0));
  EXPECT_EQ(copy->getinstance(0), inst.getinstance(0));
  EXPECT_EQ(copy->top, inst.top);
  EXPECT_EQ(copy->tmplt, 0x8003);
  // The copy is not destroyed: both hold the same storage.
}

TEST(Instance, AnAssignedCopyMayBeTheOneThatIsDestroyed) {
  alignas(BX_INSTANCE) unsigned char room[sizeof(BX_INSTANCE)];
  auto* inst = new (room) BX_INSTANCE("A", 1, 2, 3, 4);
  add_wire(*inst, "W");
  add(*inst, "C", 1, 2, 3, 4);
  BX_INSTANCE copy(nullptr, 0, 0, 0, 0);
  copy = *inst;
  EXPECT_EQ(wire_names(copy), names{"W"});
  EXPECT_EQ(child_names(copy), names{"C"});
}

class counted_instance : public BX_INSTANCE {
 public:
  counted_instance(const char* text, int& destroyed) : BX_INSTANCE(text, 0, 0, 1, 1), destroyed_(destroyed) {}
  counted_instance(const counted_instance&) = delete;
  counted_instance& operator=(const counted_instance&) = delete;
  ~counted_instance() override { ++destroyed_; }

 private:
  int& destroyed_;
};

TEST(Instance, ChildrenAreDestroyedThroughTheirVirtualDestructor) {
  int destroyed = 0;
  {
    BX_INSTANCE inst("P", 0, 0, 1, 1);
    auto* child = new counted_instance("C", destroyed);
    inst.addinstance(child);
    child->addinstance(new counted_instance("G", destroyed));
    child->addinstance(new counted_instance("H", destroyed));
    *child->instances.getaddr(4) = nullptr;
  }
  EXPECT_EQ(destroyed, 3);
}

/// Says what its destructor finds of it.
class last_look : public BX_INSTANCE {
 public:
  last_look(const char* text, std::vector<std::string>& seen) : BX_INSTANCE(text, 0, 0, 1, 1), seen_(seen) {}
  last_look(const last_look&) = delete;
  last_look& operator=(const last_look&) = delete;
  ~last_look() override {
    std::string all = name != nullptr ? name : "nameless";
    for (const BX_WIRE& wire : wires) all += std::string(" ") + (wire.name != nullptr ? wire.name : "nameless");
    for (const BX_INSTANCE* child : instances) {
      all += std::string(" [") + (child != nullptr && child->name != nullptr ? child->name : "none") + "]";
    }
    seen_.push_back(all);
    // A tree of the client's own, which has its own end.
    BX_INSTANCE other("OTHER", 0, 0, 1, 1);
    add(other, "CHILD", 0, 0, 1, 1);
  }

 private:
  std::vector<std::string>& seen_;
};

/// Derived and plain instances by turns, below a root.
void fill_with_derived(BX_INSTANCE& root, std::vector<std::string>& seen) {
  auto* outer = new last_look("OUTER", seen);
  add_wire(*outer, "W");
  BX_INSTANCE* plain = test::make("PLAIN", 0, 0, 1, 1);
  auto* inner = new last_look("INNER", seen);
  add_wire(*inner, "V");
  add(*inner, "LEAF", 0, 0, 1, 1);
  plain->addinstance(inner);
  outer->addinstance(plain);
  outer->addinstance(new last_look("SECOND", seen));
  root.addinstance(outer);
}

TEST(Instance, DestructorsOfDerivedInstancesFindTheirNamesWiresAndChildren) {
  const names expected{"OUTER W [SECOND] [PLAIN]", "INNER V [LEAF]", "SECOND"};
  for (const bx_long by_flags : {0, 1}) {
    const test::flow set(by_flags);
    for (const bool in_database : {false, true}) {
      names seen;
      {
        std::unique_ptr<BX_INSTANCE> root(in_database ? new BX_DB("D", 0, 0, 1, 1) : test::make("R", 0, 0, 1, 1));
        fill_with_derived(*root, seen);
      }
      ASSERT_EQ(seen.size(), 3U);
      EXPECT_EQ(seen[0], expected[0]) << "parents come first";
      std::sort(seen.begin(), seen.end());
      names sorted = expected;
      std::sort(sorted.begin(), sorted.end());
      EXPECT_EQ(seen, sorted) << by_flags << in_database;
    }
  }
}

/// Takes itself out of its parent at its end.
class leaving_instance : public BX_INSTANCE {
 public:
  explicit leaving_instance(BX_INSTANCE& parent) : BX_INSTANCE("L", 0, 0, 1, 1), parent_(parent) {}
  leaving_instance(const leaving_instance&) = delete;
  leaving_instance& operator=(const leaving_instance&) = delete;
  ~leaving_instance() override {
    BX_INSTANCE** const here = std::find(parent_.instances.begin(), parent_.instances.end(), this);
    EXPECT_NE(here, parent_.instances.end());
    if (here != parent_.instances.end()) *here = nullptr;
  }

 private:
  BX_INSTANCE& parent_;
};

TEST(Instance, DestructorsOfDerivedInstancesFindTheirParents) {
  for (const bool in_database : {false, true}) {
    std::unique_ptr<BX_INSTANCE> root(in_database ? new BX_DB("D", 0, 0, 1, 1) : test::make("R", 0, 0, 1, 1));
    BX_INSTANCE* last = root.get();
    for (int i = 0; i < 100; ++i) {
      for (int twin = 0; twin < 2; ++twin) last->addinstance(new leaving_instance(*last));
      last = last->instances[0];
    }
  }
}

TEST(Instance, NestingOfDerivedInstancesNeedsNoStack) {
  int destroyed = 0;
  {
    BX_INSTANCE root("R", 0, 0, 1, 1);
    BX_INSTANCE* last = &root;
    for (int i = 0; i < 200000; ++i) {
      BX_INSTANCE* next = new counted_instance("N", destroyed);
      // Some brothers, too, so that not every list has one child only.
      if (i % 1000 == 0) last->addinstance(new counted_instance("B", destroyed));
      last->addinstance(next);
      last = next;
    }
  }
  EXPECT_EQ(destroyed, 200200);
}

TEST(Instance, StandaloneDestroyedFreesItsNamesAndOneInADatabaseDoesNot) {
  {  // The leak checker looks at this one.
    BX_INSTANCE alone("ALONE", 0, 0, 1, 1);
    test::add_wires(alone, {"A", "B"});
    add(alone, "CHILD", 5, 5, 6, 6);
  }
  BX_DB db("DB", 0, 0, 1, 1);
  BX_INSTANCE* inst = add(db, "I", 0, 0, 1, 1);
  add_wire(*inst, "W");
  const char* name = inst->name;
  const char* wire_name = inst->getwire(0)->name;
  delete inst;
  db.instances[0] = nullptr;
  EXPECT_STREQ(name, "I");
  EXPECT_STREQ(wire_name, "W");
  EXPECT_EQ(test::intern(db, "I"), name);
  EXPECT_EQ(test::intern(db, "W"), wire_name);
}

}  // namespace
