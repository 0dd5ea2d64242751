// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "np_device.h"

#include <gtest/gtest.h>

#include "builders.h"
#include "test_host.h"

namespace {

constexpr const char* good = "NP_DEVICE:1\nrows 2 0 100 200\ncolumns 3 0 50 100 150\n";

TEST(TableDevice, TellsItsHighestRowAndColumn) {
  NP_TABLEDEVICE device({0, 100, 200}, {0, 50, 100, 150});
  EXPECT_EQ(device.maxrow(), 1);
  EXPECT_EQ(device.maxcol(), 2);
}

TEST(TableDevice, LowerEdgeBelongsToItsRowAndTheLastUpperEdgeToo) {
  NP_TABLEDEVICE device({0, 100, 200}, {-50, 0, 50});
  EXPECT_EQ(device.rowof(UT_POINT{0, 0}), 0);
  EXPECT_EQ(device.rowof(UT_POINT{0, 99}), 0);
  EXPECT_EQ(device.rowof(UT_POINT{0, 100}), 1);
  EXPECT_EQ(device.rowof(UT_POINT{0, 200}), 1);
  EXPECT_EQ(device.colof(UT_POINT{-50, 0}), 0);
  EXPECT_EQ(device.colof(UT_POINT{-1, 0}), 0);
  EXPECT_EQ(device.colof(UT_POINT{0, 999}), 1);
  EXPECT_EQ(device.colof(UT_POINT{50, 999}), 1);
}

TEST(TableDevice, PointOutsideHasARowOutside) {
  NP_TABLEDEVICE device({0, 100}, {0, 100});
  for (const bx_long at : {-1, 101, INT32_MIN, INT32_MAX}) {
    const bx_long row = device.rowof(UT_POINT{0, at});
    const bx_long column = device.colof(UT_POINT{at, 0});
    EXPECT_TRUE(row < 0 || row > device.maxrow()) << at;
    EXPECT_TRUE(column < 0 || column > device.maxcol()) << at;
  }
}

TEST(TableDevice, EveryPointAgreesWithAPlainSearch) {
  const std::vector<bx_long> edges{-7, -3, 0, 1, 12};
  NP_TABLEDEVICE device(edges, edges);
  for (bx_long at = -10; at <= 15; ++at) {
    bx_long expected = -1;
    for (bx_long line = 0; line < 4; ++line) {
      const auto i = static_cast<std::size_t>(line);
      if (edges[i] <= at && (at < edges[i + 1] || (line == 3 && at == edges[i + 1]))) expected = line;
    }
    EXPECT_EQ(device.rowof(UT_POINT{0, at}), expected) << at;
    EXPECT_EQ(device.colof(UT_POINT{at, 0}), expected) << at;
  }
}

class Description : public testing::Test {
 protected:
  test::temporary_folder folder;
  std::string name = folder.file("device.npd");
  std::string why;

  std::unique_ptr<NP_TABLEDEVICE> read(const std::string& text) {
    test::write_file(name, text);
    why.clear();
    return NP_TABLEDEVICE::read(name.c_str(), why);
  }

  void expect_fault(const std::string& text, int line, const std::string& what) {
    EXPECT_EQ(read(text), nullptr) << text;
    const std::string start = name + ":" + std::to_string(line) + ": expected ";
    EXPECT_EQ(why.substr(0, start.size()), start) << text;
    EXPECT_NE(why.find(what, start.size()), std::string::npos) << why;
    EXPECT_EQ(why.find('\n'), std::string::npos);
  }
};

TEST_F(Description, GivesTheEdges) {
  const auto device = read(good);
  ASSERT_NE(device, nullptr) << why;
  EXPECT_EQ(device->maxrow(), 1);
  EXPECT_EQ(device->maxcol(), 2);
  EXPECT_EQ(device->rowof(UT_POINT{0, 150}), 1);
  EXPECT_EQ(device->colof(UT_POINT{120, 0}), 2);
}

TEST_F(Description, AnyWhiteSpaceSeparates) {
  for (const char* text :
       {"NP_DEVICE:1 rows 1 0 1 columns 1 0 1", "\r\n\t NP_DEVICE:1\r\nrows\n1\n0\n1\ncolumns\t1 0 1\n\n "}) {
    const auto device = read(text);
    ASSERT_NE(device, nullptr) << why;
    EXPECT_EQ(device->maxrow(), 0);
    EXPECT_EQ(device->maxcol(), 0);
  }
}

TEST_F(Description, EdgesMayHaveAnyValueInAscendingOrder) {
  const auto device = read("NP_DEVICE:1\nrows 2 -2147483648 0 2147483647\ncolumns 1 -5 -4\n");
  ASSERT_NE(device, nullptr) << why;
  EXPECT_EQ(device->rowof(UT_POINT{0, INT32_MAX}), 1);
  EXPECT_EQ(device->rowof(UT_POINT{0, INT32_MIN}), 0);
}

TEST_F(Description, FaultInTheFirstLineNamesFileAndLine) {
  for (const char* text : {"", "\n\n", "NP_DEVICE:2\nrows 1 0 1\ncolumns 1 0 1\n", "np_device:1\n", "BX_DB:A\n"}) {
    EXPECT_EQ(read(text), nullptr);
    EXPECT_EQ(why.substr(0, name.size() + 1), name + ":") << text;
  }
  expect_fault("NP_DEVICE:2\nrows 1 0 1\n", 1, "\"NP_DEVICE:1\"");
  expect_fault("\n\nOTHER\n", 3, "\"NP_DEVICE:1\"");
}

TEST_F(Description, MissingOrMisspelledRowsNameFileAndLine) {
  expect_fault("NP_DEVICE:1\nrow 1 0 1\ncolumns 1 0 1\n", 2, "\"rows\"");
  expect_fault("NP_DEVICE:1\ncolumns 1 0 1\nrows 1 0 1\n", 2, "\"rows\"");
  expect_fault("NP_DEVICE:1\n", 2, "\"rows\"");
  expect_fault("NP_DEVICE:1\nrows 1 0 1\n", 3, "\"columns\"");
  expect_fault("NP_DEVICE:1\nrows 1 0 1\nROWS 1 0 1\n", 3, "\"columns\"");
}

TEST_F(Description, CountOutsideItsRangeNamesFileAndLine) {
  for (const char* count : {"0", "-1", "32768", "99999999999", "x", "1x", "1.5", ""}) {
    expect_fault(std::string("NP_DEVICE:1\nrows ") + count + "\n", *count == '\0' ? 3 : 2, "1 to 32767");
  }
}

TEST_F(Description, GreatestCountIsTaken) {
  std::string text = "NP_DEVICE:1\nrows 32767";
  for (int i = 0; i <= 32767; ++i) text += " " + std::to_string(i);
  const auto device = read(text + "\ncolumns 1 0 1\n");
  ASSERT_NE(device, nullptr) << why;
  EXPECT_EQ(device->maxrow(), 32766);
  EXPECT_EQ(device->rowof(UT_POINT{0, 12345}), 12345);
}

TEST_F(Description, EdgesThatDoNotAscendNameFileAndLine) {
  expect_fault("NP_DEVICE:1\nrows 2 0 100 100\ncolumns 1 0 1\n", 2, "edge 2");
  expect_fault("NP_DEVICE:1\nrows 2 0\n100\n50\ncolumns 1 0 1\n", 4, "edge 2");
  expect_fault("NP_DEVICE:1\nrows 1 0 1\ncolumns 1 5 4\n", 3, "edge 1");
}

TEST_F(Description, EdgesThatAreMissingOrNoNumbersNameFileAndLine) {
  expect_fault("NP_DEVICE:1\nrows 2 0 100\ncolumns 1 0 1\n", 3, "edge 2");
  expect_fault("NP_DEVICE:1\nrows 1 0 1\ncolumns 3 0 1 2", 3, "edge 3");
  expect_fault("NP_DEVICE:1\nrows 1 0 2147483648\n", 2, "edge 1");
  expect_fault("NP_DEVICE:1\nrows 1 zero 1\n", 2, "edge 0");
  expect_fault("NP_DEVICE:1\nrows 1 0 +1\n", 2, "edge 1");
}

TEST_F(Description, AnythingBehindTheEdgesNamesFileAndLine) {
  expect_fault(std::string(good) + "more\n", 4, "the end of the file");
  expect_fault("NP_DEVICE:1\nrows 1 0 1\ncolumns 1 0 1 2\n", 3, "the end of the file");
}

TEST_F(Description, EndlessWordIsAFaultAtOnce) {
  expect_fault("NP_DEVICE:1\nrows " + std::string(1000000, '1'), 2, "1 to 32767");
  expect_fault(std::string(1000000, 'N'), 1, "\"NP_DEVICE:1\"");
  expect_fault(std::string(good) + std::string(1000000, 'x'), 4, "the end of the file");
}

TEST_F(Description, CutOffAnywhereIsAFaultOrTheWholeDevice) {
  const std::string text(good);
  for (std::size_t length = 0; length < text.size(); ++length) {
    const auto device = read(text.substr(0, length));
    if (device != nullptr) {
      // Only the last line end, or digits of the last edge that keep it ascending, may be missing.
      EXPECT_GE(length + 1, text.size());
    } else {
      EXPECT_EQ(why.substr(0, name.size() + 1), name + ":") << length;
    }
  }
}

TEST_F(Description, OfAStreamIsReadAsThatOfAFileAndFaultsHaveTheNameGiven) {
  UT_MEMFILE stream{std::string(good)};
  const auto device = NP_TABLEDEVICE::read(stream, "stream", why);
  ASSERT_NE(device, nullptr) << why;
  EXPECT_EQ(device->maxcol(), 2);
  UT_MEMFILE faulty{std::string("NP_DEVICE:1\nfault")};
  EXPECT_EQ(NP_TABLEDEVICE::read(faulty, "stream", why), nullptr);
  EXPECT_EQ(why.substr(0, 9), "stream:2:") << why;
}

TEST_F(Description, FileThatCannotBeReadIsNamed) {
  const std::string missing = folder.file("missing.npd");
  EXPECT_EQ(NP_TABLEDEVICE::read(missing.c_str(), why), nullptr);
  EXPECT_TRUE(test::is_fault(why, missing + ": cannot open for reading: ", "No such file or directory"));
  const std::string directory = folder.name();
  EXPECT_EQ(NP_TABLEDEVICE::read(directory.c_str(), why), nullptr);
  EXPECT_TRUE(test::is_fault(why, directory + ": cannot open for reading: ", "Is a directory"));
}

TEST_F(Description, WrittenReadsBackEqual) {
  const NP_TABLEDEVICE device({0, 100, 200}, {0, 50, 100, 150});
  ASSERT_TRUE(device.write(name.c_str(), why)) << why;
  EXPECT_EQ(test::read_file(name), good);
  const auto again = NP_TABLEDEVICE::read(name.c_str(), why);
  ASSERT_NE(again, nullptr) << why;
  const std::string copy = folder.file("copy.npd");
  ASSERT_TRUE(again->write(copy.c_str(), why));
  EXPECT_EQ(test::read_file(copy), good);
}

TEST_F(Description, FileThatCannotBeWrittenIsNamed) {
  const NP_TABLEDEVICE device({0, 1}, {0, 1});
  const std::string below = folder.file("none/device.npd");
  EXPECT_FALSE(device.write(below.c_str(), why));
  EXPECT_TRUE(test::is_fault(why, below + ": cannot open for writing: ", "No such file or directory"));
}

TEST_F(Description, ReadingLeavesNoFileRegistered) {
  const bx_long before = ut_file->getcount();
  read(good);
  read("NP_DEVICE:1\nfault");
  NP_TABLEDEVICE::read(folder.file("missing").c_str(), why);
  EXPECT_EQ(ut_file->getcount(), before);
}

}  // namespace
