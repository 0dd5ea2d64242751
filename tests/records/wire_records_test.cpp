// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// One wire at a time, as a binary record and as a text line.
#include <gtest/gtest.h>

#include <csignal>
#include <limits>

#include "record_bytes.h"

namespace {

using test::number;
using test::reference;

constexpr bx_long least = std::numeric_limits<bx_long>::min();
constexpr bx_long greatest = std::numeric_limits<bx_long>::max();

std::string binary_of(const BX_WIRE& wire) {
  UT_MEMFILE file;
  EXPECT_EQ(wire.writeme(&file), 1);
  return file.bytes();
}

std::string text_of(const BX_WIRE& wire) {
  UT_MEMFILE file;
  EXPECT_EQ(wire.writeme(static_cast<UT_STREAM*>(&file)), 1);
  return file.bytes();
}

unsigned char read_text(BX_WIRE& wire, const std::string& text, char separator = '$') {
  UT_MEMFILE file{std::string(text)};
  return wire.readme(static_cast<UT_STREAM*>(&file), separator);
}

std::string line_with(const std::string& name, const std::string& point = " (1, 2)") {
  return "BX_WIRE:  \"" + name + "\"" + point + "\n";
}

TEST(BinaryWireRecord, IsTheNamesAddressAndTwoNumbers) {
  const BX_WIRE wire("A$B", 3, -4);
  EXPECT_EQ(binary_of(wire), reference(test::address_of(wire.name)) + std::string("\3\0\0\0\xfc\xff\xff\xff", 8));
}

TEST(BinaryWireRecord, HoldsTheExtremesOfCoordinates) {
  const BX_WIRE wire("A", least, greatest);
  EXPECT_EQ(binary_of(wire).substr(8), std::string("\0\0\0\x80\xff\xff\xff\x7f", 8));
}

TEST(BinaryWireRecord, WritesAMissingNameAsZero) {
  const BX_WIRE wire(nullptr, 1, 2);
  EXPECT_EQ(binary_of(wire), reference(0) + number(1) + number(2));
}

TEST(BinaryWireRecord, ReadsTheNameFromTheFixTableAndBorrowsIt) {
  char name[] = "CLK";
  UT_MEMFILE file(reference(0x1122334455667788) + number(-7) + number(9));
  file.fixtable().setnewaddr(0x1122334455667788, name);
  BX_WIRE wire("OLD", 0, 0);
  EXPECT_EQ(wire.readme(&file, '$'), 1);
  EXPECT_EQ(wire.getname(), name);
  EXPECT_TRUE(wire.nameborrowed);
  EXPECT_EQ(wire.nodex, -7);
  EXPECT_EQ(wire.nodey, 9);
  EXPECT_EQ(file.fixtable().checkptrs(), nullptr);
}

TEST(BinaryWireRecord, CutsTheSharedStringForAllWhoHoldIt) {
  char name[] = "a$b$c";
  UT_MEMFILE file(test::wire_bytes(16, 0, 0) + test::wire_bytes(16, 0, 0));
  file.fixtable().setnewaddr(16, name);
  BX_WIRE first;
  BX_WIRE second;
  EXPECT_EQ(first.readme(&file, '/'), 1);
  EXPECT_STREQ(first.getname(), "a/b$c");
  EXPECT_EQ(second.readme(&file, '/'), 1);
  EXPECT_STREQ(first.getname(), "a/b/c");
  EXPECT_EQ(first.getname(), second.getname());
}

TEST(BinaryWireRecord, LeavesAnUnknownReferenceNullAndRemembered) {
  UT_MEMFILE file(test::wire_bytes(16, 1, 2));
  BX_WIRE wire;
  EXPECT_EQ(wire.readme(&file, '$'), 1);
  EXPECT_EQ(wire.getname(), nullptr);
  EXPECT_EQ(file.fixtable().checkptrs(), &wire.name);
}

TEST(BinaryWireRecord, TakesReferenceZeroForAMissingName) {
  UT_MEMFILE file(test::wire_bytes(0, 1, 2));
  BX_WIRE wire;
  EXPECT_EQ(wire.readme(&file, '$'), 1);
  EXPECT_EQ(wire.getname(), nullptr);
  EXPECT_EQ(file.fixtable().checkptrs(), nullptr);
}

TEST(BinaryWireRecord, GivesFalseWheneverTheCoordinatesAreCutOff) {
  const std::string whole = test::wire_bytes(0, 1, 2);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    UT_MEMFILE file(whole.substr(0, length));
    BX_WIRE wire;
    EXPECT_EQ(wire.readme(&file, '$'), 0) << length << " bytes";
  }
}

TEST(TextWireRecord, IsOneLineWithTwoBlanksBeforeTheName) {
  EXPECT_EQ(text_of(BX_WIRE("A$B", 3, -4)), "BX_WIRE:  \"A$B\" (3, -4)\n");
  EXPECT_EQ(text_of(BX_WIRE("", least, greatest)), "BX_WIRE:  \"\" (-2147483648, 2147483647)\n");
}

TEST(TextWireRecord, WritesAMissingNameAsAnEmptyOne) {
  EXPECT_EQ(text_of(BX_WIRE(nullptr, 1, 2)), "BX_WIRE:  \"\" (1, 2)\n");
}

TEST(TextWireRecord, ReadsWhatItWrites) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, text_of(BX_WIRE("A$B", least, greatest))), 1);
  EXPECT_STREQ(wire.getname(), "A$B");
  EXPECT_EQ(wire.nodex, least);
  EXPECT_EQ(wire.nodey, greatest);
  EXPECT_FALSE(wire.nameborrowed);
}

TEST(TextWireRecord, ReadWithASlashReplacesOnlyTheFirstDollar) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with("a$b$c"), '/'), 1);
  EXPECT_STREQ(wire.getname(), "a/b$c");
}

TEST(TextWireRecord, ReadWithTheInitialSeparatorCutsTheNameAtItsFirstDollar) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with("a$b$c"), '\0'), 1);
  EXPECT_STREQ(wire.getname(), "a");
}

TEST(TextWireRecord, ReadsABlankAndMinusSevenAsY) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, "BX_WIRE:  \"A\" (5, -7)\n"), 1);
  EXPECT_EQ(wire.nodex, 5);
  EXPECT_EQ(wire.nodey, -7);
  EXPECT_EQ(read_text(wire, "BX_WIRE:  \"A\" (5,-7)\n"), 1);
  EXPECT_EQ(wire.nodey, -7);
}

TEST(TextWireRecord, ReadsMalformedNumbersAsZero) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with("A", " (x, 12y)")), 1);
  EXPECT_EQ(wire.nodex, 0);
  EXPECT_EQ(wire.nodey, 12);
}

TEST(TextWireRecord, ReadsTheNumberBehindTheFirstBlankAlone) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with("A", " (1,    2)") + "next"), 1);
  EXPECT_EQ(wire.nodey, 2);
}

TEST(TextWireRecord, ConsumesTheRestOfItsLineAndNoMore) {
  UT_MEMFILE file(line_with("A", " (1, 2) and more") + line_with("B", " (3, 4)\r"));
  BX_WIRE first;
  BX_WIRE second;
  EXPECT_EQ(first.readme(static_cast<UT_STREAM*>(&file), '$'), 1);
  EXPECT_EQ(second.readme(static_cast<UT_STREAM*>(&file), '$'), 1);
  EXPECT_STREQ(second.getname(), "B");
  EXPECT_EQ(second.nodey, 4);
  EXPECT_EQ(file.bytesleft(), 0);
}

TEST(TextWireRecord, GivesFalseWhenTheLineHasNoEnd) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, "BX_WIRE:  \"A\" (1, 2)"), 0);
  EXPECT_STREQ(wire.getname(), "A");
  EXPECT_EQ(wire.nodey, 2);
}

TEST(TextWireRecord, ReadsANameOfNinetyNineCharacters) {
  const std::string name(99, 'n');
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with(name)), 1);
  EXPECT_EQ(wire.getname(), name);
}

void read_and_leave(const std::string& text) {
  BX_WIRE wire;
  read_text(wire, text);
  test::leave_process(0);
}

TEST(TextWireRecordDeathTest, ANameOfAHundredCharactersAbortsTheProcess) {
  EXPECT_EXIT(read_and_leave(line_with(std::string(100, 'n'))), test::ended_by_fast_fail, "^$");
}

TEST(TextWireRecordDeathTest, ANameThatTheStreamDoesNotHoldAbortsTheProcess) {
  EXPECT_EXIT(read_and_leave("BX_WIRE:  \""), test::ended_by_fast_fail, "^$");
}

TEST(TextWireRecordDeathTest, NumbersBeyondTheBufferAbortTheProcess) {
  const std::string digits(100, '0');
  EXPECT_EXIT(read_and_leave(line_with("A", " (" + digits + ", 2)")), test::ended_by_fast_fail, "^$");
  EXPECT_EXIT(read_and_leave(line_with("A", " (1, " + digits + ")")), test::ended_by_fast_fail, "^$");
}

TEST(TextWireRecordDeathTest, NumbersThatTheStreamDoesNotHoldAbortTheProcess) {
  EXPECT_EXIT(read_and_leave("BX_WIRE:  \"A\" ("), test::ended_by_fast_fail, "^$");
  EXPECT_EXIT(read_and_leave("BX_WIRE:  \"A\" (1,"), test::ended_by_fast_fail, "^$");
}

TEST(TextWireRecord, ReadsANumberOfNinetyNineCharacters) {
  BX_WIRE wire;
  EXPECT_EQ(read_text(wire, line_with("A", " (" + std::string(98, '0') + "7, 2)")), 1);
  EXPECT_EQ(wire.nodex, 7);
}

}  // namespace
