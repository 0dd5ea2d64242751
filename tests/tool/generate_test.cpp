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
    words line = {"generate", file("a.bxd")};
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
  EXPECT_TRUE(holds(expect(0, line).err, "the one that stands there is of another device\n"));
  EXPECT_EQ(read_file(file("a.npd")), "old");
}

TEST_F(BxdbGenerate, SizesThatGiveNoDeviceAreAFailureThatNamesTheFile) {
  for (const words& size : std::vector<words>{{"--columns", "2"}, {"--rows", "100000000"}, {"--wires", "70000"}}) {
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

}  // namespace
