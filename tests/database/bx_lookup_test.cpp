// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "exposed.h"

namespace {

using test::add;
using test::add_wire;

class Lookup : public testing::Test {
 protected:
  BX_INSTANCE inst{"P", 0, 0, 10, 10};
};

TEST_F(Lookup, DuplicatesAreEnumeratedByPassingThePreviousIndexAsStart) {
  test::add_wires(inst, {"A", "A", "B"});
  EXPECT_EQ(inst.getwireid("A", -1), 0);
  EXPECT_EQ(inst.getwireid("A", 0), 1);
  EXPECT_EQ(inst.getwireid("A", 1), -1);
}

TEST_F(Lookup, SearchBehindTheLastWireEndsAtTheCount) {
  test::add_wires(inst, {"A", "A", "B"});
  EXPECT_LT(inst.getwireid("B", 2), 0);
  EXPECT_LT(inst.getwireid("B", 3), 0);
  EXPECT_LT(inst.getwireid("B", 1000), 0);
  EXPECT_LT(inst.getwireid("B", INT32_MAX), 0);
}

TEST_F(Lookup, MissingWireIsNegative) {
  EXPECT_LT(inst.getwireid("A", -1), 0);
  test::add_wires(inst, {"B", "D"});
  EXPECT_LT(inst.getwireid("A", -1), 0);
  EXPECT_LT(inst.getwireid("C", -1), 0);
  EXPECT_LT(inst.getwireid("E", -1), 0);
  EXPECT_LT(inst.getwireid("C", 0), 0);
}

TEST_F(Lookup, AnyNegativeStartSearchesFromTheFirst) {
  test::add_wires(inst, {"A", "B"});
  EXPECT_EQ(inst.getwireid("B", -2), 1);
  EXPECT_EQ(inst.getwireid("B", INT32_MIN), 1);
}

TEST_F(Lookup, ScanFromAStartPassesOverWiresThatSortBehindTheName) {
  // The scan goes on while the name sorts before the wire, so a greater wire behind the start ends it
  // only at the end of the wires, and a smaller one at once.
  test::add_wires(inst, {"A", "B", "C"});
  EXPECT_LT(inst.getwireid("A", 0), 0);
  EXPECT_LT(inst.getwireid("C", 0), 0);
  EXPECT_EQ(inst.getwireid("B", 0), 1);
}

TEST_F(Lookup, NamesAreComparedAsUnsignedBytes) {
  test::add_wires(inst, {"\xff", "z"});
  EXPECT_EQ(inst.getwireid("z", -1), 0);
  EXPECT_EQ(inst.getwireid("\xff", -1), 1);
}

TEST_F(Lookup, StemSearchFindsAnyWireOfTheSameStem) {
  test::add_wires(inst, {"P$7"});
  EXPECT_EQ(inst.getwireid_tr("P$1", -1), 0);
  EXPECT_EQ(inst.getwireid_tr("P", -1), 0);
  EXPECT_LT(inst.getwireid_tr("PP$7", -1), 0);
  EXPECT_LT(inst.getwireid("P$1", -1), 0);
  BX_INSTANCE plain("Q", 0, 0, 1, 1);
  test::add_wires(plain, {"P"});
  EXPECT_EQ(plain.getwireid_tr("P$1", -1), 0);
}

TEST_F(Lookup, StemSearchEnumeratesEveryWireOfTheStem) {
  test::add_wires(inst, {"O", "P", "P$1", "P$2$3", "Q"});
  EXPECT_EQ(inst.getwireid_tr("P$9", -1), 1);
  EXPECT_EQ(inst.getwireid_tr("P$9", 1), 2);
  EXPECT_EQ(inst.getwireid_tr("P$9", 2), 3);
  EXPECT_LT(inst.getwireid_tr("P$9", 3), 0);
}

TEST_F(Lookup, EmptyStemIsAStem) {
  test::add_wires(inst, {"$1", "A"});
  EXPECT_EQ(inst.getwireid_tr("", -1), 0);
  EXPECT_EQ(inst.getwireid_tr("$2", -1), 0);
}

TEST_F(Lookup, StemsUpToTheDocumentedLimitAreComparedWhole) {
  const std::string longest(static_cast<std::size_t>(BX_TR_NAME_LIMIT - 2), 'x');
  add_wire(inst, (longest + "a$").c_str());
  EXPECT_EQ(BX_TR_NAME_LIMIT, 111);
  EXPECT_EQ(inst.getwireid_tr((longest + "a").c_str(), -1), 0);
  EXPECT_LT(inst.getwireid_tr((longest + "b").c_str(), -1), 0);
}

TEST_F(Lookup, StemSearchForANameBeyondTheLimitIsSafe) {
  const std::string text(100000, 'x');
  add_wire(inst, text.c_str());
  add_wire(inst, (text + "$1").c_str());
  const bx_long id = inst.getwireid_tr(text.c_str(), -1);
  EXPECT_LT(id, 2);
}

TEST_F(Lookup, WireByAddressAnswersWithAddresses) {
  test::add_wires(inst, {"A", "A", "B"});
  BX_WIRE* first = inst.getwire("A", nullptr);
  EXPECT_EQ(first, inst.getwire(0));
  EXPECT_EQ(inst.getwire("A", first), inst.getwire(1));
  EXPECT_EQ(inst.getwire("A", inst.getwire(1)), nullptr);
  EXPECT_EQ(inst.getwire("C", nullptr), nullptr);
  EXPECT_EQ(inst.getwire("B", inst.getwire(1)), inst.getwire(2));
}

TEST_F(Lookup, WireByAddressAndStemAnswersWithAddresses) {
  test::add_wires(inst, {"A$1", "A$2", "B"});
  BX_WIRE* first = inst.getwire_tr("A", nullptr);
  EXPECT_EQ(first, inst.getwire(0));
  EXPECT_EQ(inst.getwire_tr("A", first), inst.getwire(1));
  EXPECT_EQ(inst.getwire_tr("A", inst.getwire(1)), nullptr);
}

TEST_F(Lookup, ForeignWireAsStartGivesNull) {
  test::add_wires(inst, {"A", "A"});
  BX_WIRE foreign("A", 0, 0);
  BX_INSTANCE other("Q", 0, 0, 1, 1);
  add_wire(other, "A");
  EXPECT_EQ(inst.getwire("A", &foreign), nullptr);
  EXPECT_EQ(inst.getwire("A", other.getwire(0)), nullptr);
  EXPECT_EQ(inst.getwire_tr("A", &foreign), nullptr);
}

TEST_F(Lookup, IndexOutOfRangeGivesNull) {
  add_wire(inst, "A");
  add(inst, "C", 0, 0, 1, 1);
  for (const bx_long i : {-1, 1, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(inst.getwire(i), nullptr) << i;
    EXPECT_EQ(inst.getinstance(i), nullptr) << i;
  }
  EXPECT_NE(inst.getwire(0), nullptr);
  EXPECT_NE(inst.getinstance(0), nullptr);
}

TEST_F(Lookup, OverloadsWithLiteralArgumentsAreUnambiguous) {
  EXPECT_EQ(inst.getinstance(0), nullptr);
  EXPECT_EQ(inst.getinstance("A", nullptr), nullptr);
  EXPECT_EQ(inst.getinstance(1, 2, nullptr), nullptr);
  EXPECT_EQ(inst.getwire(0), nullptr);
  EXPECT_EQ(inst.getwire(1, 2, "A"), nullptr);
  EXPECT_EQ(inst.getwire("A", nullptr), nullptr);
  EXPECT_LT(inst.getinstanceid("A", -1), 0);
  EXPECT_LT(inst.getinstanceid(1, 2, -1), 0);
}

TEST_F(Lookup, NullNamesCountAsEmpty) {
  test::add_wires(inst, {nullptr, "A"});
  add(inst, nullptr, 0, 0, 1, 1);
  EXPECT_EQ(inst.getwireid("", -1), 0);
  EXPECT_EQ(inst.getwireid(nullptr, -1), 0);
  EXPECT_EQ(inst.getwireid_tr(nullptr, -1), 0);
  EXPECT_EQ(inst.getinstanceid("", -1), 0);
  EXPECT_EQ(inst.getinstance(nullptr, nullptr), inst.getinstance(0));
}

TEST_F(Lookup, ChildrenOfOneNameAreEnumeratedWherePositionAndNameOrderAgree) {
  add(inst, "A", 0, 0, 1, 1);
  add(inst, "B", 0, 1, 1, 1);
  add(inst, "B", 0, 2, 1, 2);
  add(inst, "C", 0, 3, 1, 3);
  EXPECT_EQ(inst.getinstanceid("B", -1), 1);
  EXPECT_EQ(inst.getinstanceid("B", 1), 2);
  EXPECT_LT(inst.getinstanceid("B", 2), 0);
  BX_INSTANCE* first = inst.getinstance("B", nullptr);
  EXPECT_EQ(first, inst.getinstance(1));
  EXPECT_EQ(inst.getinstance("B", first), inst.getinstance(2));
  EXPECT_EQ(inst.getinstance("B", inst.getinstance(2)), nullptr);
  EXPECT_LT(inst.getinstanceid("B", INT32_MAX), 0);
}

TEST_F(Lookup, ChildOutOfNameOrderCanBeMissedByTheBinarySearch) {
  add(inst, "Z", 0, 0, 1, 1);
  add(inst, "M", 0, 1, 1, 1);
  add(inst, "A", 0, 2, 1, 2);
  EXPECT_EQ(inst.getinstanceid("M", -1), 1);
  EXPECT_LT(inst.getinstanceid("A", -1), 0);
  EXPECT_LT(inst.getinstanceid("Z", -1), 0);
}

TEST_F(Lookup, ScanOverChildrenPassesOverNamesThatSortBehindTheSearchedOne) {
  add(inst, "Z", 0, 0, 1, 1);
  add(inst, "M", 0, 1, 1, 1);
  add(inst, "A", 0, 2, 1, 2);
  EXPECT_EQ(inst.getinstanceid("A", 0), 2);
  EXPECT_EQ(inst.getinstance("A", inst.getinstance(0)), inst.getinstance(2));
}

TEST_F(Lookup, ChildrenCoveringAPointAreEnumeratedInPositionOrder) {
  BX_INSTANCE* low = add(inst, "LOW", 0, 0, 5, 9);
  BX_INSTANCE* high = add(inst, "HIGH", 0, 4, 5, 6);
  add(inst, "ELSEWHERE", 0, 7, 5, 9);
  EXPECT_EQ(inst.getinstanceid(3, 5, -1), 0);
  EXPECT_EQ(inst.getinstanceid(3, 5, 0), 1);
  EXPECT_EQ(inst.getinstanceid(3, 5, 1), -1);
  EXPECT_EQ(inst.getinstance(3, 5, nullptr), low);
  EXPECT_EQ(inst.getinstance(3, 5, low), high);
  EXPECT_EQ(inst.getinstance(3, 5, high), nullptr);
  EXPECT_EQ(inst.getinstanceid(3, 5, 99), -1);
  EXPECT_EQ(inst.getinstanceid(3, 5, INT32_MAX), -1);
}

TEST_F(Lookup, PointOnAnEdgeIsCovered) {
  add(inst, "C", 0, 2, 4, 6);
  EXPECT_EQ(inst.getinstanceid(0, 4, -1), 0);
  EXPECT_EQ(inst.getinstanceid(4, 4, -1), 0);
  EXPECT_EQ(inst.getinstanceid(2, 2, -1), 0);
  EXPECT_EQ(inst.getinstanceid(2, 6, -1), 0);
  EXPECT_EQ(inst.getinstanceid(-1, 4, -1), -1);
  EXPECT_EQ(inst.getinstanceid(5, 4, -1), -1);
  EXPECT_EQ(inst.getinstanceid(2, 1, -1), -1);
  EXPECT_EQ(inst.getinstanceid(2, 7, -1), -1);
}

TEST_F(Lookup, OwnWireWinsOverThoseOfDescendants) {
  BX_INSTANCE* child = add(inst, "C", 0, 0, 5, 5);
  add_wire(*child, "W", 1, 1);
  EXPECT_EQ(inst.getwire(2, 2, "W"), child->getwire(0));
  add_wire(inst, "W", 2, 2);
  EXPECT_EQ(inst.getwire(2, 2, "W"), inst.getwire(0));
}

TEST_F(Lookup, OwnWireIsFoundWhateverThePoint) {
  add_wire(inst, "W");
  EXPECT_EQ(inst.getwire(1000, -1000, "W"), inst.getwire(0));
}

TEST_F(Lookup, FirstCoveringSubtreeWithTheWireWinsDepthFirst) {
  BX_INSTANCE* a = add(inst, "A", 0, 0, 5, 5);
  BX_INSTANCE* deep = add(*a, "DEEP", 0, 0, 5, 5);
  BX_INSTANCE* b = add(inst, "B", 0, 1, 5, 5);
  add_wire(*deep, "W$1");
  add_wire(*b, "W$2");
  EXPECT_EQ(inst.getwire_tr(3, 3, "W"), deep->getwire(0));
  EXPECT_EQ(inst.getwire(3, 3, "W$2"), b->getwire(0));
  EXPECT_EQ(inst.getwire(3, 3, "W"), nullptr);
  EXPECT_EQ(inst.getwire(3, 6, "W$1"), nullptr);
}

TEST_F(Lookup, PositionalWalkStopsAtTheFirstChildThatStartsBeyondTheNextColumn) {
  // Widened by its own conversion, the last child covers x = 3 out of position order; it is reached only
  // past children that start at x + 1 at most.
  BX_INSTANCE* next = add(inst, "NEXT", 4, 0, 9, 9);
  add(inst, "LAST", 7, 0, 9, 9);
  BX_INSTANCE* last = inst.getinstance(1);
  add_wire(*last, "W");
  last->xmin = 0;
  EXPECT_EQ(inst.getwire(3, 3, "W"), last->getwire(0)) << "a child at x + 1 does not end the walk";
  EXPECT_EQ(inst.getwire_tr(3, 3, "W$1"), last->getwire(0));
  EXPECT_EQ(inst.getwire(2, 3, "W"), nullptr) << "a child beyond x + 1 ends it";
  add_wire(*next, "V");
  EXPECT_EQ(inst.getwire(3, 3, "V"), nullptr) << "the child at x + 1 cannot cover x";
}

TEST_F(Lookup, PositionsAtTheEndsOfTheNumberRangeDoNotOverflow) {
  BX_INSTANCE* child = add(inst, "C", 0, 0, INT32_MAX, INT32_MAX);
  add_wire(*child, "W");
  EXPECT_EQ(inst.getwire(INT32_MAX, INT32_MAX, "W"), child->getwire(0));
  EXPECT_EQ(inst.getwire(INT32_MIN, 0, "W"), nullptr);
  EXPECT_EQ(inst.getinstanceid(INT32_MAX, INT32_MAX, -1), 0);
}

TEST_F(Lookup, NullChildrenArePassedOver) {
  BX_INSTANCE* child = add(inst, "C", 0, 0, 5, 5);
  add_wire(*child, "W");
  *inst.instances.getaddr(2) = nullptr;
  std::swap(inst.instances[0], inst.instances[2]);
  EXPECT_EQ(inst.getwire(1, 1, "W"), child->getwire(0));
  EXPECT_EQ(inst.getinstanceid(1, 1, -1), 2);
  EXPECT_EQ(inst.getinstance(1, 1, nullptr), child);
  EXPECT_EQ(inst.getinstanceid("C", -1), 2);
}

}  // namespace
