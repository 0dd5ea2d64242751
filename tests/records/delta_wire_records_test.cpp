// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Wires coded against the wire before: 9 to 17 bytes each.
#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "record_bytes.h"

namespace {

constexpr bx_long least = std::numeric_limits<bx_long>::min();
constexpr bx_long greatest = std::numeric_limits<bx_long>::max();

class coded_wire : public BX_WIRE {
 public:
  using BX_WIRE::BX_WIRE;
  using BX_WIRE::currentX;
  using BX_WIRE::currentY;
  using BX_WIRE::isCurrentXYSet;
};

/// The running position is the process's: every test starts from a clean one.
class DeltaWireRecord : public testing::Test {
 protected:
  void SetUp() override { BX_WIRE::resetCurrentXY(); }
  void TearDown() override { BX_WIRE::resetCurrentXY(); }

  /// The record of a wire without name, its reference taken off.
  static std::string coded(bx_long x, bx_long y) {
    UT_MEMFILE file;
    EXPECT_EQ(BX_WIRE(nullptr, x, y).writemeCompressed(&file), 1);
    EXPECT_EQ(file.bytes().substr(0, 8), test::reference(0));
    return file.bytes().substr(8);
  }

  static BX_POINT read(const std::string& payload) {
    UT_MEMFILE file(test::reference(0) + payload);
    BX_WIRE wire;
    EXPECT_EQ(wire.readmeCompressed(&file, '$'), 1);
    return {wire.nodex, wire.nodey};
  }
};

std::string bytes(std::initializer_list<int> values) {
  std::string result;
  for (const int value : values) result += static_cast<char>(static_cast<unsigned char>(value));
  return result;
}

TEST_F(DeltaWireRecord, FirstAfterAResetIsAbsoluteEvenAtTheOrigin) {
  EXPECT_EQ(coded(0, 0), bytes({0x0f, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(coded_wire::isCurrentXYSet);
}

TEST_F(DeltaWireRecord, TakesNineBytesForAWireAtTheOriginAfterOneThere) {
  coded(0, 0);
  EXPECT_EQ(coded(0, 0), bytes({0x00}));
}

TEST_F(DeltaWireRecord, CodesXByTheSizeOfItsStep) {
  const auto after_origin = [](bx_long x) {
    BX_WIRE::resetCurrentXY();
    coded(0, 0);
    return coded(x, 0);
  };
  EXPECT_EQ(after_origin(1), bytes({0x04, 1}));
  EXPECT_EQ(after_origin(127), bytes({0x04, 127}));
  EXPECT_EQ(after_origin(128), bytes({0x08, 128, 0}));
  EXPECT_EQ(after_origin(-128), bytes({0x04, 0x80}));
  EXPECT_EQ(after_origin(-129), bytes({0x08, 0x7f, 0xff}));
  EXPECT_EQ(after_origin(32767), bytes({0x08, 0xff, 0x7f}));
  EXPECT_EQ(after_origin(-32768), bytes({0x08, 0x00, 0x80}));
  EXPECT_EQ(after_origin(32768), bytes({0x0c, 0x00, 0x80, 0, 0}));
  EXPECT_EQ(after_origin(-32769), bytes({0x0c, 0xff, 0x7f, 0xff, 0xff}));
}

TEST_F(DeltaWireRecord, CodesYByTheSizeOfItsStep) {
  const auto after_origin = [](bx_long y) {
    BX_WIRE::resetCurrentXY();
    coded(0, 0);
    return coded(0, y);
  };
  EXPECT_EQ(after_origin(127), bytes({0x01, 127}));
  EXPECT_EQ(after_origin(128), bytes({0x02, 128, 0}));
  EXPECT_EQ(after_origin(-128), bytes({0x01, 0x80}));
  EXPECT_EQ(after_origin(-129), bytes({0x02, 0x7f, 0xff}));
  EXPECT_EQ(after_origin(32767), bytes({0x02, 0xff, 0x7f}));
  EXPECT_EQ(after_origin(32768), bytes({0x03, 0x00, 0x80, 0, 0}));
}

TEST_F(DeltaWireRecord, WritesTheAbsoluteCoordinateNotTheStepWhereTheStepIsTooLarge) {
  coded(100, 200);
  EXPECT_EQ(coded(100 + 32768, 201), bytes({0x0d, 100, 0x80, 0, 0, 1}));
}

TEST_F(DeltaWireRecord, PutsThePayloadOfXBeforeThatOfY) {
  coded(0, 0);
  EXPECT_EQ(coded(-2, 300), bytes({0x06, 0xfe, 0x2c, 0x01}));
}

TEST_F(DeltaWireRecord, StepsWrapAroundAtTheExtremes) {
  coded(greatest, least);
  EXPECT_EQ(coded(least, greatest), bytes({0x05, 1, 0xff}));
  BX_WIRE::resetCurrentXY();
  EXPECT_EQ(read(bytes({0x0f, 0xff, 0xff, 0xff, 0x7f, 0, 0, 0, 0x80})), BX_POINT(greatest, least));
  EXPECT_EQ(read(bytes({0x05, 1, 0xff})), BX_POINT(least, greatest));
}

TEST_F(DeltaWireRecord, HoldsTheReferenceAsTheBinaryRecordDoes) {
  const BX_WIRE wire("A", 1, 2);
  UT_MEMFILE file;
  wire.writemeCompressed(&file);
  EXPECT_EQ(file.bytes(), test::reference(test::address_of(wire.name)) + bytes({0x0f, 1, 0, 0, 0, 2, 0, 0, 0}));
}

TEST_F(DeltaWireRecord, RunningPositionSpansRecordsAndFiles) {
  coded(7, 9);
  EXPECT_EQ(coded_wire::currentX, 7);
  EXPECT_EQ(coded_wire::currentY, 9);
  EXPECT_EQ(coded(8, 8), bytes({0x05, 1, 0xff}));
  BX_WIRE::resetCurrentXY();
  EXPECT_FALSE(coded_wire::isCurrentXYSet);
  EXPECT_EQ(coded_wire::currentX, 0);
  EXPECT_EQ(coded_wire::currentY, 0);
}

TEST_F(DeltaWireRecord, ReaderMovesThePositionButNeverMarksItAsSet) {
  EXPECT_EQ(read(bytes({0x0f, 5, 0, 0, 0, 6, 0, 0, 0})), BX_POINT(5, 6));
  EXPECT_FALSE(coded_wire::isCurrentXYSet);
  EXPECT_EQ(coded_wire::currentX, 5);
  EXPECT_EQ(coded_wire::currentY, 6);
  EXPECT_EQ(coded(5, 6), bytes({0x0f, 5, 0, 0, 0, 6, 0, 0, 0}));
}

TEST_F(DeltaWireRecord, ReaderExtendsSigns) {
  EXPECT_EQ(read(bytes({0x05, 0x80, 0x7f})), BX_POINT(-128, 127));
  EXPECT_EQ(read(bytes({0x0a, 0x00, 0x80, 0xff, 0x7f})), BX_POINT(-128 - 32768, 127 + 32767));
  EXPECT_EQ(read(bytes({0x00})), BX_POINT(-128 - 32768, 127 + 32767));
}

TEST_F(DeltaWireRecord, ReaderIgnoresTheUpperBitsOfTheCodeByte) {
  EXPECT_EQ(read(bytes({0xf5, 3, 4})), BX_POINT(3, 4));
}

TEST_F(DeltaWireRecord, ReaderBorrowsAndCutsTheName) {
  char name[] = "a$b$c";
  UT_MEMFILE file(test::reference(32) + bytes({0x05, 1, 2}));
  file.fixtable().setnewaddr(32, name);
  BX_WIRE wire("OLD", 0, 0);
  EXPECT_EQ(wire.readmeCompressed(&file, '/'), 1);
  EXPECT_EQ(wire.getname(), name);
  EXPECT_TRUE(wire.nameborrowed);
  EXPECT_STREQ(name, "a/b$c");
}

TEST_F(DeltaWireRecord, ReaderSaysTrueWhereverTheRecordIsCutOff) {
  const std::string whole = test::reference(0) + bytes({0x0f, 5, 0, 0, 0, 6, 0, 0, 0});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    BX_WIRE::resetCurrentXY();
    UT_MEMFILE file(whole.substr(0, length));
    BX_WIRE wire;
    EXPECT_EQ(wire.readmeCompressed(&file, '$'), 1);
    EXPECT_EQ(wire.nodex, length >= 13 ? 5 : 0);
    EXPECT_EQ(wire.nodey, 0);
  }
}

/// What the coder is meant to do, in 64-bit arithmetic.
struct plain_coder {
  bool set = false;
  bx_long x = 0, y = 0;

  static bx_long wrapped(std::int64_t value) { return static_cast<bx_long>(static_cast<bx_ulong>(value)); }

  static int code(bool relative, bx_long step) {
    if (!relative || step < -32768 || step > 32767) return 3;
    if (step == 0) return 0;
    return step >= -128 && step <= 127 ? 1 : 2;
  }

  static std::string payload(int code, bx_long step, bx_long whole) {
    if (code == 3) return test::number(whole);
    return test::little_endian(static_cast<bx_ulong>(step), code);
  }

  std::string write(bx_long new_x, bx_long new_y) {
    const bx_long dx = wrapped(std::int64_t{new_x} - x);
    const bx_long dy = wrapped(std::int64_t{new_y} - y);
    const int x_code = code(set, dx);
    const int y_code = code(set, dy);
    x = new_x;
    y = new_y;
    set = true;
    return bytes({x_code * 4 + y_code}) + payload(x_code, dx, x) + payload(y_code, dy, y);
  }
};

bx_long next_coordinate(std::mt19937& random, bx_long last) {
  constexpr std::int64_t steps[] = {0, 1, -1, 127, 128, -128, -129, 32767, 32768, -32768, -32769};
  const auto pick = random() % 16;
  if (pick < std::size(steps)) return plain_coder::wrapped(last + steps[pick]);
  if (pick == 11) return greatest;
  if (pick == 12) return least;
  if (pick == 13) return static_cast<bx_long>(random());
  return plain_coder::wrapped(last + static_cast<std::int64_t>(random() % 2000) - 1000);
}

TEST_F(DeltaWireRecord, RandomWiresAreCodedAsByAPlainModelAndReadBack) {
  std::mt19937 random(20240607);
  for (int round = 0; round < 20; ++round) {
    BX_WIRE::resetCurrentXY();
    plain_coder model;
    std::vector<BX_POINT> points;
    std::string file_bytes;
    BX_POINT at(static_cast<bx_long>(random()), static_cast<bx_long>(random()));
    for (int i = 0; i < 500; ++i) {
      points.push_back(at);
      const std::string expected = model.write(at.x, at.y);
      ASSERT_EQ(coded(at.x, at.y), expected) << "wire " << i;
      file_bytes += test::reference(0) + expected;
      at = BX_POINT(next_coordinate(random, at.x), next_coordinate(random, at.y));
    }
    BX_WIRE::resetCurrentXY();
    UT_MEMFILE file(std::move(file_bytes));
    for (const BX_POINT& point : points) {
      BX_WIRE wire;
      ASSERT_EQ(wire.readmeCompressed(&file, '$'), 1);
      ASSERT_EQ(BX_POINT(wire.nodex, wire.nodey), point);
    }
    EXPECT_EQ(file.bytesleft(), 0);
    EXPECT_TRUE(file.ok());
  }
}

}  // namespace
