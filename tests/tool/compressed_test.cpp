// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Compressed files: made from others, made into others, and taken by every command.
#include "bxdb_runner.h"
#include "packing_formats.h"
#include "program.h"
#include "qelmocompress.h"

namespace {

using namespace test;

/// The small database with names that come back from a compressed file.
std::string plain_text() { return replaced(replaced(small_text(), "A$1", "A1"), "A$2", "A2"); }

class BxdbCompressed : public ToolTest {
 protected:
  void generate(const std::string& name, const std::string& form) const {
    expect(0, {"generate", file(name), "--columns", "12", "--rows", "9", "--wires", "30", "--form", form});
  }

  /// A generated device in binary and, made of that, in compressed form.
  void make_both() {
    generate("device.bxd", "binary");
    binary_ = file("device.bxd");
    compressed_ = file("small.bxd");
    expect(0, {"convert", binary_, compressed_, "--form", "compressed"});
  }

  /// Runs the line for both; "FILE" in it stands for the database. They must print and end alike.
  void expect_alike(int status, const words& line) const {
    const auto run_on = [&](const std::string& db) {
      words named = line;
      for (std::string& word : named) {
        if (word == "FILE") word = db;
      }
      return expect(status, named);
    };
    const outcome of_binary = run_on(binary_);
    outcome of_compressed = run_on(compressed_);
    for (std::size_t at = 0; (at = of_compressed.out.find(compressed_, at)) != std::string::npos;) {
      of_compressed.out.replace(at, compressed_.size(), binary_);
    }
    EXPECT_FALSE(of_binary.out.empty()) << line[0];
    EXPECT_TRUE(of_binary.out == of_compressed.out) << line[0];
  }

  std::string binary_;
  std::string compressed_;
};

TEST_F(BxdbCompressed, TextToBinaryToCompressedToTextGivesTheSameBytes) {
  const std::string db = made("a.bxd", plain_text());
  expect(0, {"convert", db, file("b.bxd"), "--form", "binary"});
  const outcome quiet = expect(0, {"convert", file("b.bxd"), file("c.bxd"), "--form", "compressed"});
  EXPECT_EQ(quiet.out + quiet.err, "");
  EXPECT_EQ(read_file(file("c.bxd")).substr(0, 8), "BX_DB:C\n");
  expect(0, {"convert", file("c.bxd"), file("d.bxd"), "--form", "text"});
  EXPECT_EQ(read_file(file("d.bxd")), plain_text());
}

TEST_F(BxdbCompressed, EveryFormLeadsToEveryOther) {
  const words forms = {"text", "binary", "compressed"};
  for (const std::string& form : forms) {
    generate(form, form);
    EXPECT_EQ(json_of(0, {"info", file(form)})["form"], form);
    EXPECT_EQ(json_of(0, {"check", file(form)})["sound"], true);
  }
  for (const std::string& from : forms) {
    for (const std::string& to : forms) {
      expect(0, {"convert", file(from), file("out.bxd"), "--form", to});
      EXPECT_EQ(json_of(0, {"check", file("out.bxd")})["form"], to);
      expect(0, {"diff", file("text"), file("out.bxd")});
    }
  }
}

TEST_F(BxdbCompressed, TheFileIsMuchSmallerAndGivesTheSameTree) {
  make_both();
  EXPECT_LT(3 * std::filesystem::file_size(compressed_), std::filesystem::file_size(binary_));
  const separator kept('$');
  BX_DB a;
  BX_DB b;
  ASSERT_TRUE(a.load(binary_.c_str()));
  ASSERT_TRUE(b.load(compressed_.c_str()));
  EXPECT_TRUE(qelmodb::same_tree(a, b, qelmodb::content::database));
}

TEST_F(BxdbCompressed, OutputsArePackedAsTheirNamesSay) {
  make_both();
  for (const packing_format& packing : packings()) {
    const std::string name = "p.bxd" + packing.ending;
    expect(0, {"convert", binary_, file(name), "--form", "compressed"});
    const nlohmann::json info = json_of(0, {"info", file(name)});
    EXPECT_EQ(info["form"], "compressed");
    EXPECT_EQ(info["packing"], packing.name);
    EXPECT_LT(info["bytes_on_disk"], info["bytes"]);
    expect(0, {"diff", binary_, file(name)});
    expect(0, {"generate", file(name), "--columns", "12", "--rows", "9", "--wires", "30", "--form", "compressed"});
    expect(0, {"diff", binary_, file(name)});
  }
}

TEST_F(BxdbCompressed, AFileCanReplaceItself) {
  const std::string db = made("a.bxd", plain_text());
  for (const char* form : {"compressed", "compressed", "text"}) expect(0, {"convert", db, db, "--form", form});
  EXPECT_EQ(read_file(db), plain_text());
}

TEST_F(BxdbCompressed, EveryReadingCommandTellsTheSameAsOfTheBinaryFile) {
  make_both();
  const std::string npd = file("device.npd");
  expect_alike(0, {"print", "FILE"});
  expect_alike(0, {"print", "--grid", "FILE"});
  expect_alike(0, {"find", "FILE", "BASIC_ASS", "--json"});
  expect_alike(0, {"find", "FILE", "J0", "--wires"});
  expect_alike(0, {"at", "FILE", "150", "250"});
  expect_alike(0, {"at", "FILE", "110", "210", "--wire", "J0"});
  expect_alike(0, {"grid", "FILE", "BASIC_ASS", "--device", npd});
  expect_alike(0, {"grid", "FILE", "BASIC_ASS", "--device", npd, "--extrema"});
  expect_alike(0, {"grid", "FILE", "--device", npd, "--json"});
  expect_alike(0, {"diff", "FILE", binary_});
}

TEST_F(BxdbCompressed, ItsInfoAndCheckHaveTheSameCounts) {
  make_both();
  nlohmann::json info = json_of(0, {"info", compressed_});
  const nlohmann::json of_binary = json_of(0, {"info", binary_});
  for (const char* key : {"root", "instances", "wires", "names", "depth", "basic_ass", "basic_ass_wires", "box"}) {
    EXPECT_EQ(info[key], of_binary[key]) << key;
  }
  const nlohmann::json check = json_of(0, {"check", compressed_});
  for (const char* key : {"instances", "wires", "depth"}) EXPECT_EQ(check[key], of_binary[key]) << key;
  EXPECT_EQ(check["form"], "compressed");
}

TEST_F(BxdbCompressed, AnotherTreeIsDifferent) {
  const std::string db = made("a.bxd", plain_text());
  const std::string other = made("b.bxd", replaced(plain_text(), "(7, 8)", "(7, 9)"));
  expect(0, {"convert", other, file("c.bxd"), "--form", "compressed"});
  EXPECT_TRUE(holds(expect(1, {"diff", db, file("c.bxd")}).out, "wire moved chip/LEFT/BASIC_ASS/J0 (7, 8) -> (7, 9)"));
}

TEST_F(BxdbCompressed, AGridFileIsRefused) {
  BX_DB tree;
  ASSERT_TRUE(tree.load(made("a.bxd", plain_text()).c_str()));
  ASSERT_TRUE(tree.dumpgrid(file("a.bxg").c_str(), false));
  const std::string expected = "bxdb: " + file("a.bxg") + ": a grid file has no compressed form; it holds no wires\n";
  EXPECT_EQ(expect(2, {"convert", file("a.bxg"), file("b.bxg"), "--form", "compressed"}).err, expected);
  EXPECT_FALSE(std::filesystem::exists(file("b.bxg")));
  EXPECT_EQ(expect(2, {"explain", file("a.bxg")}).err, expected);
  expect(2, {"convert", file("a.bxd"), file("b.bxg"), "--form", "compressed"});
  EXPECT_FALSE(std::filesystem::exists(file("b.bxg")));
  expect(2, {"generate", file("c.bxg"), "--form", "compressed"});
  EXPECT_FALSE(std::filesystem::exists(file("c.bxg")));
}

TEST_F(BxdbCompressed, OneCutOffAnywhereIsInvalidAndNamesThePlace) {
  expect(0, {"convert", made("a.bxd", plain_text()), file("c.bxd"), "--form", "compressed"});
  const std::string whole = read_file(file("c.bxd"));
  for (std::size_t length = 8; length < whole.size(); length += 11 * start_stride) {
    const std::string db = made("cut.bxd", whole.substr(0, length));
    EXPECT_TRUE(holds(expect(1, {"check", db}).out, db + ": error: byte ")) << length;
    expect(2, {"info", db});
    expect(2, {"explain", db});
  }
}

// ---- trees that are larger than their files

TEST_F(BxdbCompressed, OneWhoseTreeIsBeyondTheMemoryLimitIsRefusedBeforeItIsLoaded) {
  make_both();
  const auto size = json_of(0, {"check", compressed_})["memory"].get<std::int64_t>();
  ASSERT_GT(size, 0);
  const std::string less = std::to_string(size - 1);
  for (const words& line : std::vector<words>{{"info", compressed_},
                                              {"print", compressed_},
                                              {"convert", compressed_, file("out.bxd"), "--form", "text"},
                                              {"find", compressed_, "J0"},
                                              {"at", compressed_, "1", "1"},
                                              {"grid", compressed_},
                                              {"explain", compressed_},
                                              {"diff", compressed_, compressed_}}) {
    words limited = line;
    limited.insert(limited.end(), {"--max-memory", less});
    const outcome refused = expect(2, limited);
    EXPECT_TRUE(holds(refused.err, compressed_ + ": error: byte ")) << refused.err;
    EXPECT_TRUE(holds(refused.err, ": " + std::to_string(size) + " bytes of memory go beyond the limit of " + less));
    EXPECT_TRUE(holds(refused.err, "bxdb: " + compressed_ + ": not loaded; see --max-memory\n")) << refused.err;
    EXPECT_EQ(refused.out, "");
  }
  EXPECT_FALSE(std::filesystem::exists(file("out.bxd")));
  expect(0, {"info", compressed_, "--max-memory", std::to_string(size)});
}

TEST_F(BxdbCompressed, EachLimitRefusesWhatGoesBeyondItAndIsNamed) {
  make_both();
  const nlohmann::json sound = json_of(0, {"check", compressed_});
  EXPECT_TRUE(sound["limit"].is_null());
  for (const char* limit : {"instances", "wires", "names", "depth", "memory"}) {
    const auto held = sound[limit].get<std::int64_t>();
    const std::string option = std::string("--max-") + limit;
    expect(0, {"check", compressed_, option, std::to_string(held)});
    const nlohmann::json refused = json_of(1, {"check", compressed_, option, std::to_string(held - 1)});
    EXPECT_EQ(refused["limit"], limit);
    EXPECT_EQ(refused["errors"], 1) << limit;
    EXPECT_TRUE(holds(expect(1, {"check", compressed_, option, std::to_string(held - 1)}).out,
                      compressed_ + ": beyond a limit, see " + option));
    EXPECT_TRUE(holds(expect(2, {"info", compressed_, option, std::to_string(held - 1)}).err, "see " + option));
  }
}

TEST_F(BxdbCompressed, AMegabyteThatStandsForTwentyGigabytesIsRefusedWithoutBeingAsked) {
  constexpr int wires = 60000;
  constexpr int instances = 21000;
  BX_DB tree("r", 0, 0, 0, instances);
  fill_and_compress_alike(tree, instances, wires);
  ASSERT_TRUE(tree.dumpcompress(file("c.bxd").c_str(), false));
  EXPECT_LT(std::filesystem::file_size(file("c.bxd")), 1100000U);
  const outcome refused = expect(2, {"info", file("c.bxd"), "--max-memory", "16G"});
  EXPECT_TRUE(holds(refused.err, " bytes of memory go beyond the limit of 17179869184 [r/T]")) << refused.err;
  EXPECT_EQ(json_of(0, {"check", file("c.bxd"), "--max-memory", "1T"})["wires"], 1260000000);
}

TEST_F(BxdbCompressed, CheckAndInfoCountTheSameNamesThoughLoadingCutsSome) {
  std::string one = replaced(small_text(), "\"A$1\" (1, 2)", "\"A\" (1, 2)");
  one = replaced(replaced(one, "\"A$2\" (3, 4)", "\"A$1\" (3, 4)"), "\"CLK\" (5, 6)", "\"A$2\" (5, 6)");
  // Of an instance that shares its name with such a wire, and of a switch matrix.
  const std::string two = replaced(replaced(one, "\"RIGHT\"", "\"A$1\""), "\"J0\" (7, 8)", "\"J$1\" (7, 8)");
  for (const std::string& text : {one, two}) {
    expect(0, {"convert", made("a.bxd", text), file("c.bxd"), "--form", "compressed", "--allow-loss"});
    const nlohmann::json checked = json_of(0, {"check", file("c.bxd")});
    EXPECT_EQ(checked["names"], json_of(0, {"info", file("c.bxd")})["names"]);
    EXPECT_LT(checked["names"], json_of(0, {"check", file("a.bxd")})["names"]);
  }
}

}  // namespace
