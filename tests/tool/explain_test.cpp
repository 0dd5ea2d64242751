// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <map>
#include <numeric>

#include "bxdb_runner.h"
#include "qelmocompress.h"
#include "qelmotmplt.h"

namespace {

using namespace test;

/// Two switch matrices, and four tiles of one name: two alike, one with a wire elsewhere, one with a wire more and a
/// wire less.
std::string tiles_text() {
  return "BX_DB:A\n"
         "BX_INSTANCE: \"R\" (0, 0) (99, 9)\n0\n5\n"
         "BX_INSTANCE: \"T\" (0, 0) (9, 9)\n3\n"
         "BX_WIRE:  \"A\" (1, 1)\nBX_WIRE:  \"B\" (2, 2)\nBX_WIRE:  \"C\" (3, 3)\n1\n"
         "BX_INSTANCE: \"BASIC_ASS\" (0, 0) (4, 4)\n1\nBX_WIRE:  \"J\" (1, 0)\n0\n"
         "BX_INSTANCE: \"T\" (10, 0) (19, 9)\n3\n"
         "BX_WIRE:  \"A\" (11, 1)\nBX_WIRE:  \"B\" (12, 2)\nBX_WIRE:  \"C\" (13, 3)\n1\n"
         "BX_INSTANCE: \"BASIC_ASS\" (10, 0) (14, 4)\n1\nBX_WIRE:  \"J\" (11, 0)\n0\n"
         "BX_INSTANCE: \"T\" (20, 0) (29, 9)\n3\n"
         "BX_WIRE:  \"A\" (21, 1)\nBX_WIRE:  \"B\" (22, 4)\nBX_WIRE:  \"C\" (23, 3)\n0\n"
         "BX_INSTANCE: \"T\" (30, 0) (39, 9)\n3\n"
         "BX_WIRE:  \"A\" (31, 1)\nBX_WIRE:  \"C\" (33, 3)\nBX_WIRE:  \"D\" (34, 4)\n0\n"
         "BX_INSTANCE: \"U\" (40, 0) (49, 9)\n1\nBX_WIRE:  \"A\" (41, 1)\n0\n";
}

class BxdbExplain : public ToolTest {
 protected:
  std::string tiles() const { return made("a.bxd", tiles_text()); }

  static std::vector<std::int64_t> column(const nlohmann::json& list, const char* key) {
    std::vector<std::int64_t> values;
    for (const auto& entry : list) values.push_back(entry[key].get<std::int64_t>());
    return values;
  }
};

using numbers = std::vector<std::int64_t>;

// Worked out by hand. Binary: the first line has 8 bytes; the name table 4, for each of 9 names and the root's name
// once more 8 and its text; 8 instances have 32 and 15 wires 16 each. Templates: 10 bytes, the first wire of all 17,
// all others 11. What an instance saves: 32 + 16 for each wire - 22.
TEST_F(BxdbExplain, AllNumbersOfASmallDevice) {
  EXPECT_EQ(expect(0, {"explain", tiles()}).out,
            tiles() +
                "\n"
                "  form             text database file, compressed in memory\n"
                "  instances        8\n"
                "  wires            15\n"
                "  templates        5, 4 of one instance only (117 bytes)\n"
                "  switch matrices  2 with 2 wires, in 2 columns and 1 row\n"
                "  wire lists       1\n"
                "  wire templates   1\n"
                "  binary form      616 bytes\n"
                "  compressed form  530 bytes, a ratio of 1.16\n"
                "    first line                    8 bytes\n"
                "    name table                  102 bytes\n"
                "    wire lists                   14 bytes\n"
                "    wire templates               38 bytes\n"
                "    columns and rows             22 bytes\n"
                "    templates                   170 bytes\n"
                "    tree                        176 bytes\n"
                "  losses           none\n"
                "\n"
                "Instance templates, those that save most first\n"
                "  number  wires instances record bytes  saved bytes  name\n"
                "       1      3         2           49           67  T\n"
                "       2      3         1           43           15  T\n"
                "       3      3         1           43           15  T\n"
                "       4      1         1           21            5  U\n"
                "       0      0         1           10            0  R\n"
                "\n"
                "Near misses: templates that share all but at most 3 wires with another of their name\n"
                "  template 2 (1 instance), first R/T (20, 0) (29, 9); nearest: template 1 (2 instances)\n"
                "    B at (2, 4) here, (2, 2) there\n"
                "    if these were equal, 43 bytes would be saved\n"
                "  template 3 (1 instance), first R/T (30, 0) (39, 9); nearest: template 1 (2 instances)\n"
                "    B at (2, 2) only there\n"
                "    D at (4, 4) only here\n"
                "    if these were equal, 43 bytes would be saved\n"
                "\n"
                "Wire lists of switch matrices, those of most places first\n"
                "  number  wires    places\n"
                "       0      1         2\n"
                "\n"
                "Wires of switch matrices, the largest records first\n"
                "  number  spans to absolute  vectors     runs record bytes  name\n"
                "       0      none       no        1        2           36  J\n");
}

TEST_F(BxdbExplain, JsonTellsTheSame) {
  const nlohmann::json told = json_of(0, {"explain", tiles()});
  EXPECT_EQ(told["form"], "text");
  EXPECT_EQ(told["instances"], 8);
  EXPECT_EQ(told["wires"], 15);
  EXPECT_EQ(told["switch_matrices"], 2);
  EXPECT_EQ(told["switch_matrix_wires"], 2);
  EXPECT_EQ(told["columns"], 2);
  EXPECT_EQ(told["rows"], 1);
  EXPECT_EQ(told["binary_bytes"], 616);
  EXPECT_EQ(told["compressed_bytes"], 530);
  EXPECT_DOUBLE_EQ(told["ratio"].get<double>(), 616.0 / 530.0);
  EXPECT_EQ(column(told["sections"], "bytes"), (numbers{8, 102, 14, 38, 22, 170, 176}));
  EXPECT_EQ(column(told["sections"], "offset"), (numbers{0, 8, 110, 124, 162, 184, 354}));
  EXPECT_EQ(column(told["templates"], "number"), (numbers{0, 1, 2, 3, 4}));
  EXPECT_EQ(column(told["templates"], "record_bytes"), (numbers{10, 49, 43, 43, 21}));
  EXPECT_EQ(column(told["templates"], "binary_bytes"), (numbers{32, 160, 80, 80, 48}));
  EXPECT_EQ(column(told["templates"], "saved_bytes"), (numbers{0, 67, 15, 15, 5}));
  EXPECT_EQ(told["wire_lists"], nlohmann::json({{{"number", 0}, {"wires", 1}, {"places", 2}}}));
  EXPECT_EQ(told["wire_templates"], nlohmann::json({{{"number", 0},
                                                     {"name", "J"},
                                                     {"spans_to", nullptr},
                                                     {"absolute", false},
                                                     {"vectors", 1},
                                                     {"runs", 2},
                                                     {"record_bytes", 36}}}));
  EXPECT_EQ(
      told["losses"],
      nlohmann::json(
          {{"cut_instances", 0}, {"cut_wires", 0}, {"renamed_wires", 0}, {"moved_wires", 0}, {"dropped_wires", 0}}));
}

TEST_F(BxdbExplain, JsonTellsNearMisses) {
  const nlohmann::json told = json_of(0, {"explain", tiles()});
  EXPECT_EQ(told["near_wires"], 3);
  EXPECT_EQ(told["near_complete"], true);
  ASSERT_EQ(told["near"].size(), 2U);
  EXPECT_EQ(told["near"][0],
            nlohmann::json(
                {{"template", 2},
                 {"name", "T"},
                 {"instances", 1},
                 {"first", {{"path", "R/T"}, {"box", {{"xmin", 20}, {"ymin", 0}, {"xmax", 29}, {"ymax", 9}}}}},
                 {"nearest", 1},
                 {"nearest_instances", 2},
                 {"bytes_if_equal", 43},
                 {"differences", {{{"wire", "B"}, {"here", {{"x", 2}, {"y", 4}}}, {"there", {{"x", 2}, {"y", 2}}}}}}}));
  EXPECT_EQ(told["near"][1]["differences"],
            nlohmann::json({{{"wire", "B"}, {"here", nullptr}, {"there", {{"x", 2}, {"y", 2}}}},
                            {{"wire", "D"}, {"here", {{"x", 4}, {"y", 4}}}, {"there", nullptr}}}));
}

TEST_F(BxdbExplain, NearIsWhatTheUserCallsNear) {
  EXPECT_EQ(column(json_of(0, {"explain", tiles(), "--near", "2"})["near"], "template"), (numbers{2, 3}));
  EXPECT_EQ(column(json_of(0, {"explain", tiles(), "--near", "1"})["near"], "template"), (numbers{2}));
  EXPECT_TRUE(json_of(0, {"explain", tiles(), "--near", "0"})["near"].empty());
  EXPECT_TRUE(holds(expect(0, {"explain", tiles(), "--near", "0"}).out,
                    "all but at most 0 wires with another of "
                    "their name\n  none\n"));
  expect(2, {"explain", tiles(), "--near", "-1"});
}

TEST_F(BxdbExplain, MostLimitsTheTextAndNotTheData) {
  const std::string some = expect(0, {"explain", tiles(), "--most", "1"}).out;
  EXPECT_TRUE(holds(some, "           67  T\n  ... and 4 more; see --most\n")) << some;
  EXPECT_TRUE(holds(some, "would be saved\n  ... and 1 more; see --most\n")) << some;
  EXPECT_TRUE(holds(some, "       0      1         2\n\n")) << some;
  EXPECT_EQ(json_of(0, {"explain", tiles(), "--most", "1"}), json_of(0, {"explain", tiles()}));
}

TEST_F(BxdbExplain, EveryFormOfADatabaseIsExplainedAlike) {
  expect(0, {"convert", tiles(), file("b.bxd"), "--form", "binary"});
  expect(0, {"convert", tiles(), file("c.bxd"), "--form", "compressed"});
  const nlohmann::json of_text = json_of(0, {"explain", tiles()});
  for (const auto& [name, form] : {std::pair("b.bxd", "binary"), std::pair("c.bxd", "compressed")}) {
    nlohmann::json told = json_of(0, {"explain", file(name)});
    EXPECT_EQ(told["form"], form);
    for (const char* key : {"templates", "near", "wire_lists", "wire_templates", "binary_bytes", "losses"}) {
      EXPECT_EQ(told[key], of_text[key]) << name << " " << key;
    }
  }
  EXPECT_TRUE(holds(expect(0, {"explain", file("c.bxd")}).out, "  form             compressed database file\n"));
  EXPECT_EQ(json_of(0, {"explain", file("b.bxd")})["binary_bytes"], std::filesystem::file_size(file("b.bxd")));
  EXPECT_EQ(json_of(0, {"explain", file("c.bxd")})["compressed_bytes"], std::filesystem::file_size(file("c.bxd")));
}

TEST_F(BxdbExplain, ACompressedFileKeepsAndShowsTheTemplatesThatItHolds) {
  BX_DB tree("r", 0, 0, 9, 9);
  auto* inst = new BX_INSTANCE("T", 0, 0, 9, 9);
  const BX_WIRE wire("W", 1, 1);
  inst->addwire(&wire);
  tree.addinstance(inst);
  qelmodb::intern_root_name(tree);
  tree.compress();
  inst->wires[0].nodex = 2;
  tree.compress();
  tree.asstemplates[1]->getwire(0).nodex = 2;  // now like the other, which compressing would not make
  ASSERT_TRUE(tree.dumpcompress(file("c.bxd").c_str(), false));
  expect(0, {"convert", file("c.bxd"), file("d.bxd"), "--form", "compressed"});
  for (const char* name : {"c.bxd", "d.bxd"}) {
    const nlohmann::json told = json_of(0, {"explain", file(name)});
    EXPECT_EQ(column(told["templates"], "instances"), (numbers{1, 0, 1}));
    EXPECT_EQ(column(told["templates"], "record_bytes"), (numbers{10, 27, 19}));
    EXPECT_EQ(column(told["templates"], "saved_bytes"), (numbers{0, -27, 48 - 22 - 19}));
    EXPECT_TRUE(told["near"].empty()) << "nobody has the template that nobody uses";
  }
}

TEST_F(BxdbExplain, LossesAreToldByTheirNumber) {
  const std::string db = made("a.bxd", small_text());
  const outcome told = expect(0, {"explain", db});
  EXPECT_TRUE(holds(told.out, "  losses           2 wires come back with their names cut at the first \"$\"\n"))
      << told.out;
  EXPECT_EQ(told.err, "");
  EXPECT_EQ(json_of(0, {"explain", db})["losses"]["cut_wires"], 2);
}

TEST_F(BxdbExplain, WireTemplatesTellWhereTheirWiresGo) {
  expect(0, {"generate", file("a.bxd"), "--columns", "10", "--rows", "8", "--wires", "24"});
  const nlohmann::json told = json_of(0, {"explain", file("a.bxd")});
  std::map<std::string, int> spans;
  for (const auto& wire : told["wire_templates"]) {
    ++spans[wire["spans_to"].is_null() ? "none" : wire["spans_to"].get<std::string>()];
    EXPECT_GE(wire["runs"].get<int>(), 2);
  }
  EXPECT_EQ(told["wire_templates"].size(), 24U);
  EXPECT_GT(spans["column"], 0);
  EXPECT_GT(spans["row"], 0);
  EXPECT_GT(spans["none"], 0);
  const numbers places = column(told["wire_lists"], "places");
  EXPECT_EQ(std::accumulate(places.begin(), places.end(), std::int64_t{0}), told["switch_matrices"]);
}

TEST_F(BxdbExplain, ControlCharactersOfNamesAreEscaped) {
  std::string text = tiles_text();
  for (std::size_t at = 0; (at = text.find("\"B\"", at)) != std::string::npos;) text.replace(at, 3, "\"\x1b[2J\"");
  const outcome told = expect(0, {"explain", made("a.bxd", text)});
  EXPECT_TRUE(holds(told.out, "\\x1b[2J at (2, 4) here")) << told.out;
  EXPECT_FALSE(holds(told.out, "\x1b"));
}

}  // namespace
