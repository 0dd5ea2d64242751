// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"

namespace {

using namespace test;

class BxdbInfo : public ToolTest {};
class BxdbPrint : public ToolTest {};
class BxdbFind : public ToolTest {};
class BxdbAt : public ToolTest {};

TEST_F(BxdbInfo, GivesFormCountsBoxAndSizes) {
  const nlohmann::json info = json_of(0, {"info", made("a.bxd", small_text())});
  EXPECT_EQ(info["form"], "text");
  EXPECT_EQ(info["content"], "database");
  EXPECT_EQ(info["packing"], "none");
  EXPECT_EQ(info["root"], "chip");
  EXPECT_EQ(info["instances"], 4);
  EXPECT_EQ(info["wires"], 8);
  EXPECT_EQ(info["names"], 9);
  EXPECT_EQ(info["depth"], 2);
  EXPECT_EQ(info["basic_ass"], 1);
  EXPECT_EQ(info["basic_ass_wires"], 2);
  EXPECT_EQ(info["box"], nlohmann::json({{"xmin", 0}, {"ymin", -20}, {"xmax", 100}, {"ymax", 100}}));
  EXPECT_EQ(info["bytes"], small_text().size());
  EXPECT_GE(info["load_seconds"], 0.0);
}

TEST_F(BxdbInfo, TextShowsTheSameNumbers) {
  const std::string out = expect(0, {"info", made("a.bxd", small_text())}).out;
  EXPECT_TRUE(holds(out, "form           text database file\n")) << out;
  EXPECT_TRUE(holds(out, "instances      4\n"));
  EXPECT_TRUE(holds(out, "wires          8\n"));
  EXPECT_TRUE(holds(out, "BASIC_ASS      1 instance with 2 wires\n"));
  EXPECT_TRUE(holds(out, "bounding box   (0, -20) (100, 100)\n"));
}

TEST_F(BxdbInfo, CutNamesFallTogether) {
  EXPECT_EQ(json_of(0, {"info", made("a.bxd", small_text()), "--cut"})["names"], 8);
}

TEST_F(BxdbPrint, IsTheReportOfTheLibrary) {
  const std::string db = made("a.bxd", small_text());
  const separator kept('$');
  BX_DB tree;
  ASSERT_TRUE(tree.load(db.c_str()));
  caught_report report;
  tree.printme(0);
  EXPECT_EQ(expect(0, {"print", db}).out, report.text());
}

TEST_F(BxdbPrint, ShowsControlCharactersOfNamesAsFindDoesUnlessRaw) {
  std::string text = small_text();
  for (const auto& [name, now] : std::vector<std::pair<std::string, std::string>>{
           {"\"chip\"", "\"ch\x1b[2Jip\""}, {"\"RIGHT\"", "\"\x7f\""}, {"\"A$1\"", "\"A\x08$1\""}}) {
    text = replaced(text, name, now);
  }
  const std::string db = made("a.bxd", text);
  const separator kept('$');
  BX_DB tree;
  ASSERT_TRUE(tree.load(db.c_str()));
  caught_report report;
  tree.printme(0);
  EXPECT_EQ(expect(0, {"print", db, "--raw"}).out, report.text());
  std::string shown = report.text();
  for (const auto& [raw, escaped] :
       std::vector<std::pair<std::string, std::string>>{{"\x1b", "\\x1b"}, {"\x7f", "\\x7f"}, {"\x08", "\\x08"}}) {
    shown = replaced(shown, raw, escaped);
  }
  EXPECT_EQ(expect(0, {"print", db}).out, shown);
  EXPECT_TRUE(holds(shown, "\"A\\x08$1\""));
  EXPECT_TRUE(holds(expect(0, {"find", db, "A\x08$1"}).out, "A\\x08$1"));
  EXPECT_FALSE(holds(expect(0, {"print", db, "--grid"}).out, "\x1b"));
}

TEST_F(BxdbPrint, OfAGridIsTheGridReport) {
  const std::string db = made("a.bxd", small_text());
  BX_DB tree;
  ASSERT_TRUE(tree.load(db.c_str()));
  caught_report report;
  tree.printgrid(0);
  EXPECT_EQ(expect(0, {"print", "--grid", db}).out, report.text());
  const std::string grid = file("a.bxg");
  ASSERT_TRUE(tree.dumpgrid(grid.c_str(), true));
  EXPECT_EQ(expect(0, {"print", grid}).out, report.text());
}

TEST_F(BxdbFind, ListsInstancesAndWiresEachWithItsPathAndPlace) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(expect(0, {"find", db, "J0"}).out,
            "wire chip/LEFT/BASIC_ASS/J0 (7, 8)\nwire chip/RIGHT/J0 (60, -5)\nwire chip/RIGHT/J0 (61, -5)\n");
  EXPECT_EQ(expect(0, {"find", db, "BASIC_ASS"}).out, "instance chip/LEFT/BASIC_ASS (0, 0) (20, 20)\n");
  EXPECT_EQ(expect(0, {"find", db, "A$2"}).out, "wire chip/LEFT/A$2 (3, 4)\n");
}

TEST_F(BxdbFind, KindsCanBeSelected) {
  const std::string db = made("a.bxd", replaced(small_text(), "\"J1\"", "\"LEFT\""));
  EXPECT_EQ(lines_of(expect(0, {"find", db, "LEFT"}).out), 2U);
  EXPECT_EQ(expect(0, {"find", db, "LEFT", "--instances"}).out, "instance chip/LEFT (0, 0) (40, 40)\n");
  EXPECT_EQ(expect(0, {"find", db, "LEFT", "--wires"}).out, "wire chip/LEFT/BASIC_ASS/LEFT (9, 10)\n");
  expect(1, {"find", db, "J0", "--instances"});
  expect(1, {"find", db, "chip", "--wires"});
}

TEST_F(BxdbFind, NothingFoundHasStatusOneAndNamesTheFile) {
  const std::string db = made("a.bxd", small_text());
  const outcome none = expect(1, {"find", db, "NOPE"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, db + ": nothing named \"NOPE\"\n");
  EXPECT_TRUE(json_of(1, {"find", db, "NOPE"})["found"].empty());
}

TEST_F(BxdbFind, NamesThatLookLikeCommandsOrOptionsAreNames) {
  const std::string db = made("a.bxd", replaced(replaced(small_text(), "\"RIGHT\"", "\"info\""), "\"J1\"", "\"K-1\""));
  expect(0, {"find", db, "info"});
  expect(0, {"find", db, "K-1"});
  const std::string dash = made("b.bxd", replaced(small_text(), "\"RIGHT\"", "\"--json\""));
  EXPECT_TRUE(holds(expect(0, {"find", dash, "--", "--json"}).out, "instance chip/--json"));
}

TEST_F(BxdbFind, JsonCarriesPlaces) {
  const nlohmann::json found = json_of(0, {"find", made("a.bxd", small_text()), "J0"});
  EXPECT_EQ(found["wires"], 3);
  EXPECT_EQ(found["instances"], 0);
  EXPECT_EQ(found["found"][1]["path"], "chip/RIGHT/J0");
  EXPECT_EQ(found["found"][1]["node"], nlohmann::json({{"x", 60}, {"y", -5}}));
}

TEST_F(BxdbFind, ATreeOfHundredThousandLevelsIsSearchedAndItsPathsStayShort) {
  std::string text = "BX_DB:A\n";
  constexpr int levels = 100000;
  for (int i = 0; i < levels; ++i)
    text += "BX_INSTANCE: \"N\" (0, 0) (9, 9)\n0\n" + std::string(i + 1 < levels ? "1\n" : "0\n");
  const std::string db = made("deep.bxd", text);
  EXPECT_EQ(lines_of(expect(0, {"find", db, "N"}).out), std::size_t{levels});
  EXPECT_EQ(lines_of(expect(0, {"at", db, "3", "3"}).out), std::size_t{levels});
  expect(0, {"diff", db, db});
}

TEST_F(BxdbAt, ListsTheCoveringInstancesOutermostFirst) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(expect(0, {"at", db, "20", "20"}).out,
            "instance chip (0, -20) (100, 100)\ninstance chip/LEFT (0, 0) (40, 40)\n"
            "instance chip/LEFT/BASIC_ASS (0, 0) (20, 20)\n");
  EXPECT_EQ(json_of(0, {"at", db, "20", "20"})["count"], 3);
}

TEST_F(BxdbAt, TakesNegativeCoordinates) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(lines_of(expect(0, {"at", db, "55", "-7"}).out), 2U);
  const outcome none = expect(1, {"at", db, "-5", "-7"});
  EXPECT_EQ(none.err, db + ": no instance covers (-5, -7)\n");
}

TEST_F(BxdbAt, GivesTheWireOfTheFirstCoveringInstanceThatHasOne) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(expect(0, {"at", db, "5", "5", "--wire", "CLK"}).out, "wire chip/CLK (0, 0)\n");
  EXPECT_EQ(expect(0, {"at", db, "5", "5", "--wire", "J1"}).out, "wire chip/LEFT/BASIC_ASS/J1 (9, 10)\n");
  EXPECT_EQ(expect(0, {"at", db, "55", "-7", "--wire", "J0"}).out, "wire chip/RIGHT/J0 (60, -5)\n");
  EXPECT_EQ(json_of(0, {"at", db, "5", "5", "--wire", "A$1"})["wire"]["path"], "chip/LEFT/A$1");
}

TEST_F(BxdbAt, AWireThatNoCoveringInstanceHasIsNone) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(expect(1, {"at", db, "55", "-7", "--wire", "J1"}).err, db + ": no wire \"J1\" at (55, -7)\n");
  EXPECT_TRUE(json_of(1, {"at", db, "55", "-7", "--wire", "J1"})["wire"].is_null());
}

}  // namespace
