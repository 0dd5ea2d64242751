// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The memory of a check is in proportion to the file, whatever the file holds: 16 bytes for each of its bytes, and what
// the descriptions of some hundred faults take. All blocks of the process are counted meanwhile.
#include "../templates/plain_compressed_file.h"
#include "failing_memory.h"

namespace {

using test::content;

/// What a check holds at most beyond 16 bytes for each byte of the file.
std::ptrdiff_t memory_beyond_proportion(const std::string& bytes, content what, qelmodb::check_report& report) {
  {
    const test::allocation_watch watch;
    report = qelmodb::check_bytes(bytes, what);
  }
  const long peak = test::allocation_watch::peak();
  EXPECT_GT(peak, 0);
  return peak - 16 * static_cast<std::ptrdiff_t>(bytes.size());
}

constexpr std::ptrdiff_t for_descriptions = 256 << 10;

class CheckerMemory : public testing::Test {
 protected:
  void expect_in_proportion(const std::string& bytes, content what = content::database) {
    EXPECT_LT(memory_beyond_proportion(bytes, what, report_), for_descriptions) << bytes.size() << " bytes";
  }

  qelmodb::check_report report_;
};

// Just beyond a power of two, where arrays that double take most.
constexpr int beyond_double = (1 << 16) + 1;

TEST_F(CheckerMemory, OfOffsetMapsWithoutRunsIsInProportion) {
  for (const int wires : {1, 3}) {
    const int maps = wires == 1 ? (1 << 15) + 1 : 65535;
    std::string bytes = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(0);
    bytes += test::word(wires);
    for (int i = 0; i < wires; ++i) {
      bytes += test::reference(1) + test::word(0) + test::word(2) + test::word(0) + test::word(0) + test::word(maps);
      for (int k = 0; k < maps; ++k) bytes += test::word(0) + test::word(0);
    }
    bytes += test::word(0) + test::word(0) + test::number(1) + test::reference(1) + test::word(0);
    bytes += test::skeleton_bytes({0, 0, 1, 1}, 0);
    expect_in_proportion(bytes);
    EXPECT_TRUE(report_.sound());
  }
}

TEST_F(CheckerMemory, OfAWireListIsInProportion) {
  std::string bytes = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(2);
  bytes += test::word(65535) + test::word(3);
  for (int i = 0; i < 65535 + 3; ++i) bytes += test::word(i);
  expect_in_proportion(bytes + std::string(100, '\0'));
  EXPECT_FALSE(report_.loadable());
}

TEST_F(CheckerMemory, OfDeepTreesIsInProportion) {
  std::string grid = test::binary_line;
  std::string skeletons = test::compressed_line + test::table_bytes({{1, "N"}}) + test::reference(1) + test::word(0) +
                          test::word(0) + test::word(0) + test::word(0) + test::number(1) + test::reference(1) +
                          test::word(0);
  for (int i = 0; i < beyond_double; ++i) {
    const std::string children = test::number(i + 1 < beyond_double ? 1 : 0);
    grid += test::stored("") + test::box_bytes({0, 0, 1, 1}) + children;
    skeletons += test::box_bytes({0, 0, 1, 1}) + test::word(0) + children;
  }
  expect_in_proportion(grid, content::grid);
  EXPECT_TRUE(report_.sound());
  expect_in_proportion(skeletons);
  EXPECT_TRUE(report_.sound());
}

// Each path to a fault could hold a name of 99 characters at every level, which takes 8 bytes there.
TEST_F(CheckerMemory, OfFaultsInDeepTreesIsInProportion) {
  constexpr int levels = 20000;
  std::string bytes = test::binary_line + test::table_bytes({{1, std::string(99, 'n')}});
  for (int i = 0; i < levels; ++i) {
    const bool faulty = i + 300 > levels;
    bytes += test::reference(faulty && i % 2 == 0 ? 2 : 1);
    bytes += test::box_bytes(faulty ? test::box{2, 0, 1, 2} : test::box{0, 0, 1, 1});
    bytes += test::number(0) + test::number(i + 1 < levels ? 1 : 0);
  }
  expect_in_proportion(bytes);
  EXPECT_GE(report_.errors, 100);
  EXPECT_GE(report_.warnings, 100);
  EXPECT_GE(report_.faults.size(), 200U);
}

}  // namespace
