// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"
#include "packing_formats.h"

namespace {

using namespace test;

class BxdbGenerate : public ToolTest {};

std::uint64_t fingerprint(const std::string& bytes) {
  std::uint64_t hash = 0xcbf29ce484222325U;
  for (const char c : bytes) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
  return hash;
}

TEST_F(BxdbGenerate, TheSameOptionsGiveTheSameBytes) {
  for (const char* form : {"text", "binary"}) {
    for (const char* name : {"a.bxd", "b.bxd"}) {
      expect(0, {"generate", file(name), "--columns", "12", "--rows", "9", "--seed", "7", "--form", form});
    }
    const std::string first = read_file(file("a.bxd"));
    // Binary files hold addresses, which only stand for names.
    if (std::string(form) == "text") {
      EXPECT_EQ(first, read_file(file("b.bxd")));
    } else {
      expect(0, {"diff", file("a.bxd"), file("b.bxd")});
    }
  }
}

TEST_F(BxdbGenerate, AnotherSeedGivesAnotherDevice) {
  expect(0, {"generate", file("a.bxd"), "--seed", "1"});
  expect(0, {"generate", file("b.bxd"), "--seed", "2"});
  expect(1, {"diff", file("a.bxd"), file("b.bxd"), "--summary"});
}

TEST_F(BxdbGenerate, TheFormIsBinaryUnlessAskedForText) {
  expect(0, {"generate", file("a.bxd")});
  EXPECT_EQ(json_of(0, {"info", file("a.bxd")})["form"], "binary");
  expect(0, {"generate", file("t.bxd"), "--form", "text"});
  EXPECT_EQ(json_of(0, {"info", file("t.bxd")})["form"], "text");
  expect(0, {"diff", file("a.bxd"), file("t.bxd")});
}

TEST_F(BxdbGenerate, WhatIsWrittenIsSound) {
  for (const words& options : std::vector<words>{{}, {"--names", "unique"}, {"--profile", "plain", "--wires", "5"}}) {
    words line = {"generate", file("a.bxd"), "--force"};
    line.insert(line.end(), options.begin(), options.end());
    expect(0, line);
    EXPECT_TRUE(holds(expect(0, {"check", file("a.bxd")}).out, "0 errors, 0 warnings, 0 notes"));
  }
}

TEST_F(BxdbGenerate, AGridNameGivesAGridFile) {
  expect(0, {"generate", file("a.bxg.gz")});
  expect(0, {"generate", file("a.bxd")});
  EXPECT_EQ(json_of(0, {"info", file("a.bxg.gz")})["content"], "grid");
  expect(0, {"diff", file("a.bxg.gz"), file("a.bxd")});
}

TEST_F(BxdbGenerate, TheDescriptionOfTheDeviceStandsBeside) {
  const std::string expected = "NP_DEVICE:1\nrows 3 0 100 200 300\ncolumns 4 0 100 200 300 400\n";
  for (const std::string& name :
       {std::string("a.bxd"), std::string("b.bxg"), std::string("c.bxd.gz"), "d.bxg" + packings().back().ending}) {
    expect(0, {"generate", file(name), "--columns", "4", "--rows", "3", "--wires", "48"});
    EXPECT_EQ(read_file(file(std::string(1, name[0]) + ".npd")), expected);
  }
  expect(0, {"generate", file("p"), "--profile", "plain", "--columns", "2", "--rows", "1", "--wires", "1"});
  EXPECT_EQ(read_file(file("p.npd")), "NP_DEVICE:1\nrows 2 0 64 128\ncolumns 1 0 64\n");
}

TEST_F(BxdbGenerate, ADeviceOfTooManyRowsHasNoDescription) {
  const words line = {"generate", file("a.bxd"), "--columns", "3", "--rows", "32768", "--wires", "4"};
  EXPECT_EQ(expect(0, line).err,
            "bxdb: " + file("a.npd") + ": not written: a description holds at most 32767 rows and columns\n");
  EXPECT_FALSE(std::filesystem::exists(file("a.npd")));
  EXPECT_TRUE(std::filesystem::exists(file("a.bxd")));
  made("a.npd", "old");
  EXPECT_TRUE(holds(expect(0, line).err, "the one that is there is of another device\n"));
  EXPECT_EQ(read_file(file("a.npd")), "old");
}

TEST_F(BxdbGenerate, WhatIsNoDatabaseIsReplacedOnlyByForce) {
  const std::string notes = made("notes.txt", "not to be lost\n");
  const std::string packed = made("notes.gz", packings().front().pack("not to be lost\n"));
  for (const auto& [name, description] :
       {std::pair(notes, file("notes.txt.npd")), std::pair(packed, file("notes.npd"))}) {
    const std::string before = read_file(name);
    const outcome refused = expect(2, {"generate", name});
    EXPECT_EQ(refused.err,
              "bxdb: " + name + ": not replaced: it holds no database; give the output another name, or use --force\n");
    EXPECT_TRUE(read_file(name) == before);
    EXPECT_FALSE(std::filesystem::exists(description));
    EXPECT_EQ(expect(0, {"generate", name, "--force"}).err, "");
    expect(0, {"check", name});
  }
}

TEST_F(BxdbGenerate, ADatabaseOfAnyFormIsReplacedAndSoIsAnEmptyFile) {
  made("a.bxd", "");
  expect(0, {"generate", file("a.bxd")});
  for (const char* form : {"text", "compressed", "binary"}) expect(0, {"generate", file("a.bxd"), "--form", form});
  for (const packing_format& packing : packings()) {
    const std::string name = file("p.bxd" + packing.ending);
    expect(0, {"generate", name, "--seed", "1"});
    expect(0, {"generate", name, "--seed", "2"});
    expect(0, {"generate", file("b.bxd"), "--seed", "2"});
    expect(0, {"diff", name, file("b.bxd")});
  }
}

TEST_F(BxdbGenerate, AnotherFileInTheDescriptionsPlaceIsReplacedOnlyByForce) {
  const std::string db = file("a.bxd");
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"NP_DEVICE:1\nrows 1 0 5\ncolumns 1 0 5\n", "it describes another device"},
      {"a text of somebody's\n", "it is no device description (" + file("a.npd") + ":1: expected \"NP_DEVICE:1\")"}};
  for (const auto& [bytes, reason] : cases) {
    made("a.npd", bytes);
    EXPECT_EQ(expect(2, {"generate", db, "--columns", "8"}).err,
              "bxdb: " + file("a.npd") + ": not replaced: " + reason +
                  "; move it, give the output another name, or use --force\n");
    EXPECT_EQ(read_file(file("a.npd")), bytes);
    EXPECT_FALSE(std::filesystem::exists(db));
  }
  expect(0, {"generate", db, "--columns", "8", "--force"});
  EXPECT_TRUE(holds(read_file(file("a.npd")), "columns 8 0 "));
  // The same device has the same description, whatever blanks that has.
  const std::string blanks = replaced(read_file(file("a.npd")), "columns", " columns");
  made("a.npd", blanks);
  expect(0, {"generate", db, "--columns", "8", "--seed", "2"});
  expect(2, {"generate", db, "--columns", "9"});
}

TEST_F(BxdbGenerate, ADeviceBeyondTheMachinesMemoryIsRefusedWithTheNumbers) {
  for (const words& options :
       std::vector<words>{{"--columns", "1000000", "--rows", "1000000"},
                          {"--columns", "20000", "--rows", "20000", "--wires", "40000"},
                          {"--profile", "plain", "--columns", "33000000", "--rows", "1", "--wires", "65535"}}) {
    words line = {"generate", file("a.bxd"), "--force"};
    line.insert(line.end(), options.begin(), options.end());
    const outcome refused = expect(2, line);
    EXPECT_TRUE(refused.err.starts_with("bxdb: " + file("a.bxd") + ": not written: the device would have about "))
        << refused.err;
    EXPECT_TRUE(holds(refused.err, " million wires, which take ")) << refused.err;
    EXPECT_TRUE(holds(refused.err, "B of memory, and this machine has ")) << refused.err;
    EXPECT_FALSE(std::filesystem::exists(file("a.bxd")));
  }
}

TEST_F(BxdbGenerate, SizesThatGiveNoDeviceAreAFailureThatNamesTheFile) {
  for (const words& size : std::vector<words>{{"--columns", "2147483647"}, {"--rows", "100000000"}}) {
    const outcome bad = expect(2, {"generate", file("a.bxd"), size[0], size[1]});
    EXPECT_TRUE(holds(bad.err, file("a.bxd") + ": not written: ")) << bad.err;
    EXPECT_FALSE(std::filesystem::exists(file("a.bxd")));
    EXPECT_FALSE(std::filesystem::exists(file("a.npd")));
  }
}

// The bytes of one device, so that a change of the generator, or a platform on which it behaves differently,
// does not go unseen.
TEST_F(BxdbGenerate, TheTextOfOneDeviceIsTheSameEverywhere) {
  expect(0, {"generate", file("a.bxd"), "--columns", "10", "--rows", "8", "--wires", "24", "--form", "text"});
  EXPECT_EQ(fingerprint(read_file(file("a.bxd"))), 0x725ce08c8dfd1b9bU);
}

TEST_F(BxdbGenerate, ADatabaseAndAGridFileReplaceEachOtherOnlyByForce) {
  expect(0, {"generate", file("grid.bxg")});
  expect(0, {"generate", file("all.bxd")});
  const std::string& ending = packings().back().ending;
  for (const std::string& packed : {std::string(), ending}) {
    for (const char* form : {"text", "binary"}) {
      const std::string db = file("a.bxd" + packed);
      const std::string grid = file("b.bxg" + packed);
      expect(0, {"convert", file("grid.bxg"), db, "--form", form});
      EXPECT_TRUE(holds(expect(2, {"generate", db}).err, "not replaced: it holds a grid file and no database; "));
      EXPECT_EQ(json_of(0, {"info", db})["content"], "grid");
      expect(0, {"convert", file("all.bxd"), file("c.bxd" + packed), "--form", form});
      std::filesystem::rename(file("c.bxd" + packed), grid);
      EXPECT_TRUE(holds(expect(2, {"generate", grid}).err, "not replaced: it holds a database and no grid file; "));
      for (const std::string& name : {db, grid}) expect(0, {"generate", name, "--force"});
      EXPECT_EQ(json_of(0, {"info", db})["content"], "database");
      EXPECT_EQ(json_of(0, {"info", grid})["content"], "grid");
    }
  }
}

TEST_F(BxdbGenerate, SizesOutOfRangeAreToldWithTheRangeOfTheProfile) {
  const auto range_of = [this](const words& options) {
    words line = {"generate", file("a.bxd")};
    line.insert(line.end(), options.begin(), options.end());
    const std::string err = expect(2, line).err;
    const std::size_t from = err.find("from ");
    return from == std::string::npos ? err : err.substr(from, err.find(" (", from) - from);
  };
  for (const char* size : {"-5", "2", "2147483648", "99999999999999999999"}) {
    EXPECT_EQ(range_of({"--columns", size}), "from 3 to 2147483647");
    EXPECT_EQ(range_of({"--rows", size}), "from 3 to 2147483647");
  }
  EXPECT_EQ(range_of({"--wires", "3"}), "from 4 to 65535");
  EXPECT_EQ(range_of({"--wires", "70000", "--profile", "plain"}), "from 0 to 65535");
  EXPECT_EQ(range_of({"--columns", "0", "--profile", "plain"}), "from 1 to 2147483647");
  EXPECT_FALSE(std::filesystem::exists(file("a.bxd")));
}

}  // namespace
