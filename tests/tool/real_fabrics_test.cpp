// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Databases of real fabrics, which are not part of the sources.
#include <zlib.h>

#include "bxdb_runner.h"
#include "packing_formats.h"

namespace {

using namespace test;

struct fabric {
  const char* name;
  std::int64_t bytes;
  std::int64_t instances;
  std::int64_t wires;
  std::int64_t basic_ass;
  std::int64_t basic_ass_wires;
  std::int64_t names;
  std::int64_t depth;
  const char* somewhere;  // the name of an instance
  std::int64_t rows;      // of switch matrices
  std::int64_t columns;
  const char* legend;  // of their picture, up to the most frequent kind
  std::size_t templates;
  std::size_t wire_lists;
  std::size_t wire_templates;
  std::int64_t binary_bytes;
  std::int64_t compressed_bytes;
};

void PrintTo(const fabric& one, std::ostream* out) { *out << one.name; }

class RealFabric : public ToolTest, public ::testing::WithParamInterface<fabric> {
 protected:
  static std::string packed() { return std::string(BXDB_TEST_DATA) + "/" + GetParam().name + ".bxd.gz"; }

  static std::string text() {
    gzFile file = gzopen(packed().c_str(), "rb");
    std::string bytes(static_cast<std::size_t>(GetParam().bytes) + 1, '\0');
    const int got = gzread(file, bytes.data(), static_cast<unsigned>(bytes.size()));
    gzclose(file);
    bytes.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return bytes;
  }
};

TEST_P(RealFabric, HasTheCountsThatItsOriginTells) {
  const nlohmann::json info = json_of(0, {"info", packed()});
  EXPECT_EQ(info["bytes"], GetParam().bytes);
  EXPECT_EQ(info["instances"], GetParam().instances);
  EXPECT_EQ(info["wires"], GetParam().wires);
  EXPECT_EQ(info["basic_ass"], GetParam().basic_ass);
  EXPECT_EQ(info["basic_ass_wires"], GetParam().basic_ass_wires);
  EXPECT_EQ(info["names"], GetParam().names);
  EXPECT_EQ(info["depth"], GetParam().depth);
}

TEST_P(RealFabric, IsSound) { EXPECT_EQ(json_of(0, {"check", packed()})["sound"], true); }

TEST_P(RealFabric, KeepsItsBytesThroughBinaryAndBack) {
  expect(0, {"convert", packed(), file("binary.bxd"), "--form", "binary"});
  expect(0, {"convert", file("binary.bxd"), file("text.bxd"), "--form", "text"});
  const std::string original = text();
  EXPECT_EQ(static_cast<std::int64_t>(original.size()), GetParam().bytes);
  EXPECT_TRUE(read_file(file("text.bxd")) == original);
  expect(0, {"diff", packed(), file("binary.bxd")});
}

TEST_P(RealFabric, KeepsItsBytesThroughCompressedAndBack) {
  const std::string small = file("small.bxd" + packings().back().ending);
  EXPECT_EQ(expect(0, {"convert", packed(), small, "--form", "compressed"}).err, "");
  expect(0, {"diff", packed(), small});
  expect(0, {"convert", small, file("text.bxd"), "--form", "text"});
  EXPECT_TRUE(read_file(file("text.bxd")) == text());
  EXPECT_EQ(json_of(0, {"check", small})["sound"], true);
}

TEST_P(RealFabric, IsExplained) {
  const nlohmann::json told = json_of(0, {"explain", packed()});
  EXPECT_EQ(told["instances"], GetParam().instances);
  EXPECT_EQ(told["wires"], GetParam().wires);
  EXPECT_EQ(told["switch_matrices"], GetParam().basic_ass);
  EXPECT_EQ(told["columns"], GetParam().columns);
  EXPECT_EQ(told["rows"], GetParam().rows);
  EXPECT_EQ(told["templates"].size(), GetParam().templates);
  EXPECT_EQ(told["wire_lists"].size(), GetParam().wire_lists);
  EXPECT_EQ(told["wire_templates"].size(), GetParam().wire_templates);
  EXPECT_EQ(told["binary_bytes"], GetParam().binary_bytes);
  EXPECT_EQ(told["compressed_bytes"], GetParam().compressed_bytes);
  EXPECT_EQ(told["near_complete"], true);
}

TEST_P(RealFabric, IsPrintedSearchedAndAskedForAPoint) {
  const outcome grid = expect(0, {"print", "--grid", packed()});
  EXPECT_EQ(static_cast<std::int64_t>(lines_of(grid.out)), 2 * GetParam().instances);
  EXPECT_EQ(json_of(0, {"find", packed(), "BASIC_ASS"})["instances"], GetParam().basic_ass);
  const nlohmann::json found = json_of(0, {"find", packed(), GetParam().somewhere});
  ASSERT_EQ(found["found"].size(), 1U);
  const nlohmann::json box = found["found"][0]["box"];
  const outcome at = expect(0, {"at", packed(), box["xmin"].dump(), box["ymin"].dump()});
  EXPECT_TRUE(holds(at.out, GetParam().somewhere));
}

// The switch matrices of one fabric leave two corners free, those of the other fill all rows.
TEST_P(RealFabric, ItsMatricesStandInRowsAndColumns) {
  const bool full = GetParam().rows * GetParam().columns == GetParam().basic_ass;
  words line = {"grid", packed(), "BASIC_ASS"};
  EXPECT_EQ(lines_of(expect(0, line).err), full ? 0U : 1U);
  line.emplace_back("--no-derive");
  if (!full) {
    EXPECT_TRUE(holds(expect(2, line).err, packed() + ": no grid: "));
    line.back() = "--derive-device";
  }
  const nlohmann::json grid = json_of(0, line);
  EXPECT_EQ(grid["rows"], GetParam().rows);
  EXPECT_EQ(grid["columns"], GetParam().columns);
  EXPECT_EQ(static_cast<std::int64_t>(grid["cells"].size()), GetParam().basic_ass);
  line.insert(line.end(), {"--row", std::to_string(GetParam().rows - 1), "--col", "0"});
  expect(full ? 0 : 1, line);
  line.insert(line.end(), {"--png", file("a.png"), "--svg", file("a.svg")});
  expect(full ? 0 : 1, line);
  EXPECT_GT(std::filesystem::file_size(file("a.png")), 10000U);
  EXPECT_TRUE(holds(read_file(file("a.svg")), GetParam().legend));
}

INSTANTIATE_TEST_SUITE_P(
    All, RealFabric,
    ::testing::Values(fabric{"fabulous_ihp", 3883718, 1343, 115416, 174, 100079, 1493, 3, "Tile_X1Y3_LUT4AB", 16, 11,
                             "<desc>BASIC_ASS in:\nLUT4AB 98\n", 208, 11, 741, 1916424, 187892},
                      fabric{"vtr_k6_65x65", 38588798, 10975, 1240351, 4096, 1008128, 4263, 2, "Tile_X3Y4_clb", 64, 64,
                             "<desc>BASIC_ASS in:\nclb 2961\n", 3473, 14, 252, 20293321, 937415}),
    [](const auto& param_info) { return std::string(param_info.param.name); });

}  // namespace
