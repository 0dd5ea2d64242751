// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"
#include "device_plan.h"
#include "packing_formats.h"
#include "qelmoext.h"
#include "tile_files.h"

namespace {

using namespace test;

class BxdbGrid : public ToolTest {
 protected:
  /// A report of the library on a file: that of all its tiles, without a device.
  static std::string report_of(const std::string& db, bool extrema) {
    BX_DB tree;
    EXPECT_TRUE(tree.load(db.c_str()));
    const char* all[] = {"", nullptr};
    std::string why;
    const auto grid = qelmodb::make_grid(tree, all, qelmodb::tiles::with_wires, why);
    EXPECT_NE(grid, nullptr) << why;
    if (!grid) return {};
    caught_report report;
    if (extrema) {
      grid->printextrema();
    } else {
      grid->printme();
    }
    return report.text();
  }
};

TEST_F(BxdbGrid, IsTheReportOfTheLibrary) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  EXPECT_EQ(expect(0, {"grid", db}).out, report_of(db, false));
  EXPECT_EQ(expect(0, {"grid", db, "--extrema"}).out, report_of(db, true));
  EXPECT_TRUE(holds(report_of(db, false), "2 rows and 3 columns"));
  EXPECT_TRUE(holds(report_of(db, false), "00 IO_W17   CLB_X1Y1 CLB_X2Y1"));
}

TEST_F(BxdbGrid, ControlCharactersOfNamesAreShownAsFindDoesUnlessRaw) {
  std::vector<tile_box> tiles = six_tiles();
  tiles[0].name = "IO\x1b[2J";
  tiles[3].name = "LINE_END";
  expect(0, {"convert", made("a.bxd", text_of_tiles(tiles)), file("b.bxd"), "--form", "binary"});
  // Names of binary files end with NUL, and can hold any other character.
  const std::string db = made("b.bxd", replaced(read_file(file("b.bxd")), "LINE_END", "\n"));
  const std::string raw = expect(0, {"grid", db, "--raw"}).out;
  EXPECT_EQ(raw, report_of(db, false));
  EXPECT_TRUE(holds(raw, "\x1b"));
  const std::string shown = expect(0, {"grid", db}).out;
  EXPECT_FALSE(holds(shown, "\x1b"));
  EXPECT_EQ(lines_of(shown), lines_of(raw) - 1);
  EXPECT_TRUE(holds(shown, "IO\\x1b[2J"));
  EXPECT_TRUE(holds(shown, "\\x0a "));
  EXPECT_TRUE(holds(expect(0, {"grid", db, "--extrema", "IO\x1b", "CLB", "\n", "IO_"}).out, "IO\\x1b[2J("));
  EXPECT_EQ(json_of(0, {"grid", db})["columns"], 3);
}

TEST_F(BxdbGrid, PrefixesSelectTiles) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  EXPECT_EQ(json_of(0, {"grid", db, "CLB"})["columns"], 2);
  EXPECT_EQ(json_of(0, {"grid", db, "CLB", "IO_"})["columns"], 3);
  EXPECT_EQ(json_of(0, {"grid", db, ""})["columns"], 3);
  const outcome none = expect(2, {"grid", db, "clb"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "bxdb: " + db + ": no grid: no instance is a tile\n");
}

TEST_F(BxdbGrid, OneCellIsPrintedWithPathAndRectangle) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  EXPECT_EQ(expect(0, {"grid", db, "--row", "0", "--col", "0"}).out, "instance dev/IO_W17 (0, 100) (100, 200)\n");
  EXPECT_EQ(expect(0, {"grid", db, "--row", "1", "--col", "2"}).out, "instance dev/CLB_X2Y0 (200, 0) (300, 100)\n");
  EXPECT_EQ(expect(0, {"grid", db, "CLB", "--row", "1", "--col", "0"}).out,
            "instance dev/CLB_X1Y0 (100, 0) (200, 100)\n");
}

TEST_F(BxdbGrid, ACellOfSeveralTilesShowsThemAll) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string device = made("wide.npd", "NP_DEVICE:1\nrows 2 0 100 200\ncolumns 2 0 100 300\n");
  EXPECT_EQ(expect(0, {"grid", db, "--device", device, "--row", "0", "--col", "1"}).out,
            "instance dev/CLB_X1Y1 (100, 100) (200, 200)\ninstance dev/CLB_X2Y1 (200, 100) (300, 200)\n");
}

TEST_F(BxdbGrid, AnEmptyCellHasStatusOne) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const words line = {"grid", db, "--derive-device", "--row", "1", "--col", "2"};
  const outcome empty = expect(1, line);
  EXPECT_EQ(empty.out, "");
  EXPECT_EQ(empty.err, db + ": no tile in row 1, column 2\n");
  EXPECT_TRUE(json_of(1, line)["cells"].empty());
}

TEST_F(BxdbGrid, ACellOutOfRangeIsAFailureThatTellsTheRange) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  for (const words& place : std::vector<words>{{"2", "0"}, {"0", "3"}, {"-1", "0"}, {"0", "-1"}, {"65536", "65536"}}) {
    const outcome bad = expect(2, {"grid", db, "--row", place[0], "--col", place[1]});
    EXPECT_TRUE(holds(bad.err, "no row " + place[0] + ", column " + place[1] + ": the grid has 2 rows and 3 columns"))
        << bad.err;
    EXPECT_EQ(bad.out, "");
  }
}

TEST_F(BxdbGrid, OptionsThatDoNotGoTogetherAreBadUse) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  const std::string device = made("six.npd", description_of_six());
  for (const words& options : std::vector<words>{{"--row", "0"},
                                                 {"--col", "0"},
                                                 {"--row", "0", "--col", "0", "--extrema"},
                                                 {"--json", "--extrema"},
                                                 {"--device", device, "--derive-device"},
                                                 {"--no-derive", "--derive-device"}}) {
    words line = {"grid", db};
    line.insert(line.end(), options.begin(), options.end());
    EXPECT_EQ(expect(2, line).out, "");
  }
}

TEST_F(BxdbGrid, JsonHoldsTheCellsThatHoldTiles) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const nlohmann::json grid = json_of(0, {"grid", db, "--derive-device"});
  EXPECT_EQ(grid["file"], db);
  EXPECT_EQ(grid["rows"], 2);
  EXPECT_EQ(grid["columns"], 3);
  ASSERT_EQ(grid["cells"].size(), 5U);
  const auto cell = nlohmann::json::parse(
      R"({"row": 1, "column": 1, "tiles": [{"name": "CLB_X1Y0", "box": {"xmin": 100, "ymin": 0, "xmax": 200, "ymax": 100}}]})");
  EXPECT_EQ(grid["cells"][4], cell);
  const nlohmann::json one = json_of(0, {"grid", db, "--derive-device", "--row", "1", "--col", "1"});
  ASSERT_EQ(one["cells"].size(), 1U);
  EXPECT_EQ(one["cells"][0], cell);
}

TEST_F(BxdbGrid, TilesThatLeavePlacesFreeStandWhereADescriptionSaysOrElseWhereTheyBegin) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string device = made("six.npd", description_of_six());
  const outcome told = expect(0, {"grid", db, "--device", device});
  EXPECT_TRUE(holds(told.out, "01 IO_W16   CLB_X1Y0 NULL_ASS"));
  EXPECT_EQ(told.err, "");
  const outcome asked = expect(0, {"grid", db, "--derive-device"});
  EXPECT_EQ(asked.out, told.out);
  EXPECT_EQ(asked.err, "");
  const outcome unasked = expect(0, {"grid", db});
  EXPECT_EQ(unasked.out, told.out);
  EXPECT_EQ(unasked.err,
            "bxdb: " + db +
                ": there is no description of the device, so its rows and columns are those at which tiles begin "
                "(see --device)\n");
}

TEST_F(BxdbGrid, TilesThatLeavePlacesFreeGiveNoGridWhenNothingMayBeDerived) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const outcome none = expect(2, {"grid", db, "--no-derive"});
  EXPECT_EQ(none.out, "");
  EXPECT_EQ(none.err, "bxdb: " + db +
                          ": no grid: the 5 tiles do not fill their rows, and there is no device that tells their "
                          "places (see --device and --derive-device)\n");
  const std::string device = made("six.npd", description_of_six());
  EXPECT_EQ(expect(0, {"grid", db, "--no-derive", "--device", device}).err, "");
  const std::string full = made("b.bxd", text_of_tiles(six_tiles()));
  EXPECT_EQ(expect(0, {"grid", full, "--no-derive"}).err, "");
}

TEST_F(BxdbGrid, ADescriptionThatIsNotAskedIsToldOfWhenItWasGiven) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  const std::string device = made("a.npd", "NP_DEVICE:1\nrows 1 0 100\ncolumns 1 0 100\n");
  const outcome given = expect(0, {"grid", db, "--device", device});
  EXPECT_EQ(given.err,
            "bxdb: " + db + ": the tiles fill all rows alike, so the description is not used: " + device + "\n");
  const outcome beside = expect(0, {"grid", db});
  EXPECT_EQ(beside.err, "");
  EXPECT_EQ(beside.out, given.out);
}

TEST_F(BxdbGrid, TheDescriptionBesideTheFileIsUsed) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  expect(2, {"grid", db, "--no-derive"});
  made("a.npd", description_of_six());
  const outcome described = expect(0, {"grid", db, "--no-derive"});
  EXPECT_EQ(described.err, "");
  expect(0, {"convert", db, file("a.bxd.gz"), "--form", "binary"});
  EXPECT_EQ(expect(0, {"grid", file("a.bxd.gz")}).out, described.out);
}

TEST_F(BxdbGrid, WhatWasAskedForTakesThePlaceOfTheDescriptionBesideTheFile) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string device = made("six.npd", description_of_six());
  const std::string faulty = made("a.npd", "NP_DEVICE:1\nrows two\n");
  EXPECT_TRUE(holds(expect(2, {"grid", db}).err, faulty + ":2: "));
  expect(0, {"grid", db, "--device", device});
  expect(0, {"grid", db, "--derive-device"});
}

TEST_F(BxdbGrid, ADescriptionThatCannotBeReadIsAFailureThatNamesIt) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const outcome missing = expect(2, {"grid", db, "--device", file("missing.npd")});
  EXPECT_TRUE(holds(missing.err, file("missing.npd") + ": ")) << missing.err;
}

TEST_F(BxdbGrid, ADeviceThatIsTooSmallForTheTilesGivesNoGrid) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string device = made("small.npd", "NP_DEVICE:1\nrows 1 0 100\ncolumns 3 0 100 200 300\n");
  const outcome none = expect(2, {"grid", db, "--device", device});
  EXPECT_TRUE(none.err.starts_with("bxdb: " + db + ": no grid: ")) << none.err;
  EXPECT_TRUE(holds(none.err, "is out of graph paper")) << none.err;
  EXPECT_TRUE(none.err.ends_with("(device: " + device +
                                 "; the description seems to be of another device; name the right one by "
                                 "--device, or use --derive-device)\n"))
      << none.err;
}

TEST_F(BxdbGrid, TilesOfGridFilesNeedNoWires) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  BX_DB tree;
  ASSERT_TRUE(tree.load(db.c_str()));
  ASSERT_TRUE(tree.dumpgrid(file("a.bxg").c_str(), true));
  EXPECT_EQ(expect(0, {"grid", file("a.bxg")}).out, expect(0, {"grid", db}).out);
  const std::string bare = made("bare.bxd",
                                "BX_DB:A\nBX_INSTANCE: \"dev\" (0, 0) (9, 9)\n0\n1\n"
                                "BX_INSTANCE: \"CLB\" (0, 0) (9, 9)\n0\n0\n");
  EXPECT_EQ(expect(2, {"grid", bare, "CLB"}).err, "bxdb: " + bare + ": no grid: no instance is a tile\n");
}

TEST_F(BxdbGrid, AGeneratedDeviceHasItsMatricesWhereItsPlanSays) {
  bxdb::device_options options;
  options.columns = 12;
  options.rows = 9;
  options.seed = 7;
  const bxdb::device_plan plan(options);
  std::size_t places = 0;
  for (bx_long place = 0; place < 12 * 9; ++place) {
    if (plan.kind_at(place / 9, place % 9) != bxdb::tile_kind::none) ++places;
  }
  for (const std::string& name : {std::string("a.bxd"), "a.bxg" + packings().back().ending}) {
    expect(0, {"generate", file(name), "--columns", "12", "--rows", "9", "--seed", "7"});
    const nlohmann::json grid = json_of(0, {"grid", file(name), "BASIC_ASS"});
    ASSERT_EQ(grid["rows"], 9);
    ASSERT_EQ(grid["columns"], 12);
    EXPECT_EQ(grid["cells"].size(), places);
    for (const nlohmann::json& cell : grid["cells"]) {
      const auto column = cell["column"].get<bx_long>();
      const bx_long row = 8 - cell["row"].get<bx_long>();
      EXPECT_NE(plan.kind_at(column, row), bxdb::tile_kind::none);
      ASSERT_EQ(cell["tiles"].size(), 1U);
      EXPECT_EQ(cell["tiles"][0]["box"]["xmin"], column * plan.pitch());
      EXPECT_EQ(cell["tiles"][0]["box"]["ymin"], row * plan.pitch());
    }
  }
}

TEST_F(BxdbGrid, ADescriptionThatTheTilesDoNotFitIsSaidToBeOfAnotherDevice) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string wrong = made("wrong.npd", "NP_DEVICE:1\nrows 1 0 5\ncolumns 1 0 5\n");
  const std::string hint = "(device: " + wrong +
                           "; the description seems to be of another device; name the right one by --device, or use "
                           "--derive-device)\n";
  EXPECT_TRUE(expect(2, {"grid", db, "--device", wrong}).err.ends_with(hint));
  made("a.npd", read_file(wrong));
  EXPECT_TRUE(holds(expect(2, {"grid", db}).err, "seems to be of another device"));
}

}  // namespace
