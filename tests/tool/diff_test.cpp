// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"
#include "packing_formats.h"

namespace {

using namespace test;

class BxdbDiff : public ToolTest {
 protected:
  void SetUp() override { a_ = made("a.bxd", small_text()); }

  /// What the program prints for the small tree and one with a piece replaced.
  std::string changes(const std::string& old, const std::string& now) const {
    return expect(1, {"diff", a_, made("b.bxd", replaced(small_text(), old, now))}).out;
  }

  std::string a_;
};

const char* const no_instances = "instances: 0 added, 0 removed, 0 moved, 0 resized\n";
const char* const no_wires = "wires: 0 added, 0 removed, 0 moved\n";

TEST_F(BxdbDiff, EqualTreesInAnyTwoFormsHaveStatusZero) {
  const std::string b = file("b.bxd" + packings().back().ending);
  expect(0, {"convert", a_, b, "--form", "binary"});
  EXPECT_EQ(expect(0, {"diff", a_, b}).out, a_ + " and " + b + " are equal\n");
  EXPECT_EQ(json_of(0, {"diff", b, a_})["equal"], true);
}

TEST_F(BxdbDiff, AWireThatIsGoneIsRemovedAndTheOtherWayRoundAdded) {
  const std::string less = made("b.bxd", replaced(small_text(), "2\nBX_WIRE:  \"J0\" (7, 8)\n", "1\n"));
  EXPECT_EQ(expect(1, {"diff", a_, less}).out, "wire removed chip/LEFT/BASIC_ASS/J0 (7, 8)\n" +
                                                   std::string(no_instances) + "wires: 0 added, 1 removed, 0 moved\n");
  EXPECT_EQ(expect(1, {"diff", less, a_}).out, "wire added chip/LEFT/BASIC_ASS/J0 (7, 8)\n" +
                                                   std::string(no_instances) + "wires: 1 added, 0 removed, 0 moved\n");
}

TEST_F(BxdbDiff, AWireAtAnotherNodeIsMoved) {
  EXPECT_EQ(changes("(9, 10)", "(9, -11)"), "wire moved chip/LEFT/BASIC_ASS/J1 (9, 10) -> (9, -11)\n" +
                                                std::string(no_instances) + "wires: 0 added, 0 removed, 1 moved\n");
}

TEST_F(BxdbDiff, OfWiresOfOneNameThoseAtTheSameNodeBelongTogether) {
  EXPECT_TRUE(holds(changes("(60, -5)", "(62, -5)"), "wire moved chip/RIGHT/J0 (60, -5) -> (62, -5)\n"));
}

TEST_F(BxdbDiff, AnInstanceOfTheSameSizeElsewhereIsMoved) {
  EXPECT_EQ(changes("(50, -20) (100, 30)", "(49, -19) (99, 31)"),
            "instance moved chip/RIGHT (50, -20) (100, 30) -> (49, -19) (99, 31)\n"
            "instances: 0 added, 0 removed, 1 moved, 0 resized\n" +
                std::string(no_wires));
}

TEST_F(BxdbDiff, AnInstanceOfAnotherSizeIsResized) {
  EXPECT_EQ(changes("(50, -20) (100, 30)", "(50, -20) (100, 29)"),
            "instance resized chip/RIGHT (50, -20) (100, 30) -> (50, -20) (100, 29)\n"
            "instances: 0 added, 0 removed, 0 moved, 1 resized\n" +
                std::string(no_wires));
}

TEST_F(BxdbDiff, AnInstanceOfAnotherNameIsRemovedAndAddedWithAllThatItHolds) {
  EXPECT_EQ(changes("\"LEFT\"", "\"WEST\""),
            "instance removed chip/LEFT (0, 0) (40, 40), in all 2 instances and 5 wires\n"
            "instance added chip/WEST (0, 0) (40, 40), in all 2 instances and 5 wires\n"
            "instances: 2 added, 2 removed, 0 moved, 0 resized\nwires: 5 added, 5 removed, 0 moved\n");
}

TEST_F(BxdbDiff, AnotherNameOfTheRootIsADifferenceAndTheRestIsStillCompared) {
  const std::string out = changes("\"chip\"", "\"chop\"");
  EXPECT_TRUE(holds(out, "instance renamed chip -> chop\n")) << out;
  EXPECT_TRUE(holds(out, "0 added, 0 removed, 0 moved, 0 resized, 1 renamed\n")) << out;
}

TEST_F(BxdbDiff, EqualSiblingsAreMatchedByRectangleFirstAndThenInOrder) {
  const auto tree = [](const std::string& rectangles) {
    return "BX_DB:A\nBX_INSTANCE: \"r\" (0, 0) (9, 9)\n0\n" + rectangles;
  };
  const auto child = [](const std::string& box) { return "BX_INSTANCE: \"T\" " + box + "\n0\n0\n"; };
  const std::string a = made("x.bxd", tree("2\n" + child("(0, 0) (1, 1)") + child("(4, 0) (5, 1)")));
  const std::string b =
      made("y.bxd", tree("3\n" + child("(2, 0) (3, 1)") + child("(4, 0) (5, 1)") + child("(6, 0) (7, 1)")));
  EXPECT_EQ(expect(1, {"diff", a, b}).out,
            "instance added r/T (6, 0) (7, 1)\ninstance moved r/T (0, 0) (1, 1) -> (2, 0) (3, 1)\n"
            "instances: 1 added, 0 removed, 1 moved, 0 resized\n" +
                std::string(no_wires));
}

TEST_F(BxdbDiff, JsonListsEachDifferenceWithItsPath) {
  const nlohmann::json diff = json_of(1, {"diff", a_, made("b.bxd", replaced(small_text(), "(9, 10)", "(9, 11)"))});
  EXPECT_EQ(diff["equal"], false);
  EXPECT_EQ(diff["wires"]["moved"], 1);
  EXPECT_EQ(diff["instances"]["moved"], 0);
  ASSERT_EQ(diff["differences"].size(), 1U);
  const nlohmann::json one = diff["differences"][0];
  EXPECT_EQ(one["kind"], "wire");
  EXPECT_EQ(one["change"], "moved");
  EXPECT_EQ(one["path"], "chip/LEFT/BASIC_ASS/J1");
  EXPECT_EQ(one["a"], nlohmann::json({{"x", 9}, {"y", 10}}));
  EXPECT_EQ(one["b"], nlohmann::json({{"x", 9}, {"y", 11}}));
}

TEST_F(BxdbDiff, TheSummaryOnlyCounts) {
  const std::string b = made("b.bxd", replaced(small_text(), "(9, 10)", "(9, 11)"));
  EXPECT_EQ(expect(1, {"diff", a_, b, "--summary"}).out,
            std::string(no_instances) + "wires: 0 added, 0 removed, 1 moved\n");
  EXPECT_TRUE(json_of(1, {"diff", a_, b, "--summary"})["differences"].empty());
}

TEST_F(BxdbDiff, AGridFileIsComparedWithoutWires) {
  BX_DB tree;
  ASSERT_TRUE(tree.load(a_.c_str()));
  ASSERT_TRUE(tree.dumpgrid(file("g.bxg").c_str(), false));
  const outcome equal = expect(0, {"diff", a_, file("g.bxg")});
  EXPECT_TRUE(holds(equal.err, file("g.bxg") + ": a grid file has no wires"));
}

TEST_F(BxdbDiff, HundredThousandSiblingsOfOneNameTakeNoQuadraticTime) {
  constexpr int count = 100000;
  const auto flat = [](int shift) {
    std::string text = "BX_DB:A\nBX_INSTANCE: \"r\" (0, 0) (1000000, 9)\n0\n" + std::to_string(count) + "\n";
    for (int i = 0; i < count; ++i) {
      const int x = 4 * i + shift;
      text += "BX_INSTANCE: \"T\" (" + std::to_string(x) + ", 0) (" + std::to_string(x + 1) + ", 1)\n0\n0\n";
    }
    return text;
  };
  const nlohmann::json diff = json_of(1, {"diff", made("x.bxd", flat(0)), made("y.bxd", flat(1)), "--summary"});
  EXPECT_EQ(diff["instances"]["moved"], count);
  EXPECT_EQ(diff["instances"]["added"], 0);
}

}  // namespace
