// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <type_traits>

#include "exposed.h"
#include "ut_string.h"

namespace {

using test::open_wire;

constexpr bx_long nowhere = 2147483647;

TEST(Point, StartsAtTheOriginAndComparesByBothCoordinates) {
  EXPECT_EQ(BX_POINT(), BX_POINT(0, 0));
  EXPECT_EQ(BX_POINT(3, -4).x, 3);
  EXPECT_EQ(BX_POINT(3, -4).y, -4);
  EXPECT_NE(BX_POINT(3, -4), BX_POINT(3, 4));
  EXPECT_NE(BX_POINT(3, -4), BX_POINT(-3, -4));
}

TEST(Wire, DefaultHasNoPositionAndNoNameAndFreesNothing) {
  BX_WIRE* wire = new BX_WIRE;
  EXPECT_EQ(wire->getnodex(), nowhere);
  EXPECT_EQ(wire->getnodey(), nowhere);
  EXPECT_EQ(wire->getname(), nullptr);
  EXPECT_FALSE(wire->nameborrowed);
  delete wire;
}

TEST(Wire, KeepsItsFieldsInTheOrderThatClientsRelyOn) {
  static_assert(std::is_same_v<decltype(BX_WIRE::nodex), std::int32_t>);
  static_assert(std::is_same_v<decltype(BX_WIRE::nodey), std::int32_t>);
  static_assert(std::is_same_v<decltype(BX_WIRE::name), char*>);
  static_assert(std::is_same_v<decltype(BX_WIRE::nameborrowed), bool>);
  const BX_WIRE wire;
  const auto offset = [&wire](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&wire);
  };
  EXPECT_EQ(offset(&wire.nodex), 0);
  EXPECT_EQ(offset(&wire.nodey), 4);
  EXPECT_EQ(offset(&wire.name), 8);
  EXPECT_EQ(offset(&wire.nameborrowed), 16);
  EXPECT_EQ(sizeof(BX_WIRE), 24U);
}

TEST(Wire, OwnsACopyOfTheNameItIsMadeWith) {
  char text[] = "LOUT";
  const BX_WIRE wire(text, 12, -7);
  text[0] = 'X';
  EXPECT_STREQ(wire.getname(), "LOUT");
  EXPECT_EQ(wire.getnodex(), 12);
  EXPECT_EQ(wire.getnodey(), -7);
  EXPECT_FALSE(wire.nameborrowed);
}

TEST(Wire, MadeWithoutNameHasNone) {
  const BX_WIRE wire(nullptr, 1, 2);
  EXPECT_EQ(wire.getname(), nullptr);
}

TEST(Wire, ProtectedConstructorTakesTheGivenPointerOver) {
  char* name = ut_strdup("N1");
  const BX_POINT at(5, 6);
  const open_wire wire(name, &at);
  EXPECT_EQ(wire.getname(), name);
  EXPECT_EQ(wire.getnodex(), 5);
  EXPECT_EQ(wire.getnodey(), 6);
  EXPECT_FALSE(wire.nameborrowed);
}

TEST(Wire, CopySharesTheNamePointerAndAllFields) {
  BX_WIRE wire("A", 1, 2);
  BX_WIRE copy(wire);
  EXPECT_EQ(copy.name, wire.name);
  EXPECT_EQ(copy.nodex, 1);
  EXPECT_EQ(copy.nodey, 2);
  EXPECT_FALSE(copy.nameborrowed);
  copy.name = nullptr;
}

TEST(Wire, AssignmentSharesTheNamePointerAndDoesNotFreeTheOldName) {
  BX_WIRE wire("A", 1, 2);
  BX_WIRE other("B", 3, 4);
  char* old = other.name;
  other = wire;
  EXPECT_EQ(other.name, wire.name);
  EXPECT_EQ(other.nodex, 1);
  EXPECT_EQ(other.nodey, 2);
  EXPECT_STREQ(old, "B");
  std::free(old);
  other.name = nullptr;
}

TEST(Wire, OfAWireAndItsShallowCopyOneMayBeDestroyedWithTheNameInPlace) {
  auto* wire = new BX_WIRE("A", 1, 2);
  auto* copy = new BX_WIRE(*wire);
  wire->name = nullptr;
  delete wire;
  EXPECT_STREQ(copy->getname(), "A");
  delete copy;
}

TEST(Wire, DestructorLeavesABorrowedNameAlone) {
  char text[] = "BORROWED";
  {
    BX_WIRE wire;
    wire.setname(text);
    wire.nameborrowed = true;
  }
  EXPECT_STREQ(text, "BORROWED");
}

TEST(Wire, DestructorClearsTheName) {
  alignas(BX_WIRE) unsigned char room[sizeof(BX_WIRE)];
  auto* wire = new (room) BX_WIRE("A", 1, 2);
  wire->~BX_WIRE();
  char* left = nullptr;
  std::memcpy(&left, room + 8, sizeof left);
  EXPECT_EQ(left, nullptr);
}

TEST(Wire, SetnameStoresThePointerAndDoesNotFreeTheOldName) {
  BX_WIRE wire("A", 0, 0);
  char* old = wire.name;
  char* fresh = ut_strdup("B");
  wire.setname(fresh);
  EXPECT_EQ(wire.name, fresh);
  EXPECT_STREQ(old, "A");
  std::free(old);
}

TEST(Wire, SetnameOnABorrowedWireKeepsItBorrowed) {
  char first[] = "FIRST";
  char second[] = "SECOND";
  {
    BX_WIRE wire;
    wire.nameborrowed = true;
    wire.setname(first);
    wire.setname(second);
    EXPECT_TRUE(wire.nameborrowed);
  }
  EXPECT_STREQ(first, "FIRST");
  EXPECT_STREQ(second, "SECOND");
}

TEST(Wire, ResetForgetsTheRunningPosition) {
  open_wire::currentX = 17;
  open_wire::currentY = -3;
  open_wire::isCurrentXYSet = true;
  BX_WIRE::resetCurrentXY();
  EXPECT_FALSE(open_wire::isCurrentXYSet);
  EXPECT_EQ(open_wire::currentX, 0);
  EXPECT_EQ(open_wire::currentY, 0);
}

TEST(Wire, CopyTakenFromAnInstanceFreesNothing) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  test::add_wire(inst, "A", 1, 2);
  {
    BX_WIRE copy = *inst.getwire(0);
    EXPECT_STREQ(copy.getname(), "A");
    BX_WIRE copy_of_copy = copy;
    BX_WIRE assigned;
    assigned = copy_of_copy;
    EXPECT_EQ(assigned.name, inst.getwire(0)->name);
  }
  EXPECT_STREQ(inst.getwire(0)->getname(), "A");
}

TEST(Wire, CopyTakenFromAnInstanceFreesTheNameThatItIsGivenLater) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  test::add_wire(inst, "A", 1, 2);
  {
    BX_WIRE copy = *inst.getwire(0);
    copy.setname(ut_strdup("ITS OWN"));
    EXPECT_STREQ(copy.getname(), "ITS OWN");
  }
  EXPECT_STREQ(inst.getwire(0)->getname(), "A");
}

TEST(Wire, ClientWireAssignedOverACopyFromAnInstanceIsTheHolderAgain) {
  BX_INSTANCE inst("I", 0, 0, 1, 1);
  test::add_wire(inst, "A", 1, 2);
  BX_WIRE copy = *inst.getwire(0);
  BX_WIRE own("B", 3, 4);
  copy = own;
  own.name = nullptr;
  EXPECT_STREQ(copy.getname(), "B");
}

}  // namespace
