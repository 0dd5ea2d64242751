// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_range_map.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "template_faults.h"

namespace {

using number_map = RANGE_MAP<std::uint16_t>;
using point_map = RANGE_MAP<BX_POINT>;
using numbers = std::map<std::uint16_t, std::uint16_t>;

number_map map_of(const std::vector<std::uint16_t>& values) {
  number_map map;
  map.initiate(values.data(), static_cast<std::uint16_t>(values.size()));
  return map;
}

TEST(RangeMap, StoresEachRunOnce) {
  number_map map = map_of({5, 5, 7, 7, 7, 5});
  EXPECT_EQ(map.ranges, (numbers{{0, 5}, {2, 7}, {5, 5}}));
  EXPECT_EQ(map.size, 6);
  EXPECT_EQ(map.lookup(4), 7);
  EXPECT_EQ(map.lookup(5), 5);
  EXPECT_EQ(map.lookup(0), 5);
}

TEST(RangeMap, OfOneValueHasOneRun) {
  const number_map map = map_of({3});
  EXPECT_EQ(map.ranges, (numbers{{0, 3}}));
  EXPECT_EQ(map.size, 1);
}

TEST(RangeMap, IsEmptyAtFirst) {
  const number_map map;
  EXPECT_TRUE(map.ranges.empty());
  EXPECT_EQ(map.size, 0);
}

TEST(RangeMap, OfPointsSeparatesThoseThatDifferInEitherCoordinate) {
  point_map map;
  const BX_POINT points[] = {{1, 2}, {1, 3}, {1, 3}, {2, 3}};
  map.initiate(points, 4);
  EXPECT_EQ(map.ranges, (std::map<std::uint16_t, BX_POINT>{{0, {1, 2}}, {1, {1, 3}}, {3, {2, 3}}}));
}

TEST(RangeMap, InitiatedAgainKeepsTheEntriesItHas) {
  number_map map = map_of({5, 6});
  const std::uint16_t values[] = {9, 8, 7};
  map.initiate(values, 3);
  EXPECT_EQ(map.ranges, (numbers{{0, 5}, {1, 6}, {2, 7}}));
  EXPECT_EQ(map.size, 3);
}

TEST(RangeMap, GivesAccessToTheStoredValue) {
  number_map map = map_of({5, 5, 6});
  map.lookup(1) = 4;
  EXPECT_EQ(map.lookup(0), 4);
}

TEST(RangeMap, HoldsTheGreatestNumberOfValues) {
  std::vector<std::uint16_t> values(65535);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = static_cast<std::uint16_t>(i / 3);
  number_map map = map_of(values);
  EXPECT_EQ(map.size, 65535);
  EXPECT_EQ(map.ranges.size(), 21845U);
  EXPECT_EQ(map.lookup(65534), 21844);
}

TEST(RangeMap, GivesBackRandomSequences) {
  std::mt19937 random(1);
  for (int round = 0; round < 500; ++round) {
    std::vector<std::uint16_t> values(1 + random() % 60);
    for (std::uint16_t& value : values) value = static_cast<std::uint16_t>(random() % 3);
    number_map map = map_of(values);
    for (std::size_t i = 0; i < values.size(); ++i) ASSERT_EQ(map.lookup(static_cast<std::uint16_t>(i)), values[i]);
  }
}

TEST(RangeMapFaults, EmptyArrayCannotBeTaken) {
  number_map map;
  EXPECT_EQ(test::fault_of([&] { map.initiate(nullptr, 0); }),
            "Trying to initiate RANGE_MAP with an empty array\n [BXDB] database/qelmodb/i/qelmotmplt 1");
  EXPECT_EQ(map.size, 0);
}

TEST(RangeMapFaults, IndexBeyondTheSizeHasNoValue) {
  number_map map = map_of({5, 5, 7, 7, 7, 5});
  EXPECT_EQ(test::fault_of([&] { map.lookup(6); }),
            "6 is out of range (0, 5), something is wrong\n [BXDB] database/qelmodb/i/qelmotmplt 1");
  number_map none;
  EXPECT_EQ(test::fault_of([&] { EXPECT_EQ(none.lookup(0), 0); }),
            "0 is out of range (0, -1), something is wrong\n [BXDB] database/qelmodb/i/qelmotmplt 1");
  number_map late;
  late.size = 3;
  late.ranges = {{2, 8}};
  EXPECT_EQ(late.lookup(2), 8);
  EXPECT_EQ(test::fault_of([&] { EXPECT_EQ(late.lookup(1), 0); }),
            "1 is out of range (0, 2), something is wrong\n [BXDB] database/qelmodb/i/qelmotmplt 1");
}

}  // namespace
