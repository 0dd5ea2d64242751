// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Inputs and outputs that are named "-".
#include "bxdb_runner.h"
#include "packing_formats.h"
#include "tile_files.h"

namespace {

using namespace test;

class BxdbStandardInput : public ToolTest {
 protected:
  outcome expect_with_input(int status, const words& arguments, const std::string& input_file) const {
    outcome result = run(arguments, input_file);
    EXPECT_EQ(result.status, status) << arguments[0] << "\n" << result.out << result.err;
    return result;
  }
};

class BxdbStandardOutput : public BxdbStandardInput {};

TEST_F(BxdbStandardInput, IsReadByEveryReadingCommandAsTheFileIs) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  for (const words& rest : std::vector<words>{
           {"check"}, {"print"}, {"find", "CLB_X1Y1"}, {"at", "1", "1"}, {"node", "1", "1"}, {"grid"}, {"diff", db}}) {
    words by_name = rest;
    by_name.insert(by_name.begin() + 1, db);
    words by_stream = rest;
    by_stream.insert(by_stream.begin() + 1, "-");
    const outcome named = run(by_name);
    const outcome streamed = expect_with_input(named.status, by_stream, db);
    EXPECT_EQ(lines_of(streamed.out), lines_of(named.out)) << rest[0];
    if (!holds(named.out, db)) {
      EXPECT_EQ(streamed.out, named.out) << rest[0];
    }
  }
  EXPECT_TRUE(holds(expect_with_input(0, {"info", "-"}, db).out, "standard input\n  form           text"));
  EXPECT_TRUE(holds(expect_with_input(0, {"check", "-"}, db).out, "standard input: sound"));
  EXPECT_EQ(expect_with_input(1, {"find", "-", "NOPE"}, db).err, "standard input: nothing named \"NOPE\"\n");
}

TEST_F(BxdbStandardInput, MayBePacked) {
  for (const packing_format& format : packings()) {
    const std::string db = made("packed", format.pack(small_text()));
    const outcome info = expect_with_input(0, {"info", "-", "--json"}, db);
    EXPECT_EQ(nlohmann::json::parse(info.out)["packing"], format.name);
    EXPECT_EQ(nlohmann::json::parse(info.out)["bytes_on_disk"], read_file(db).size());
  }
}

TEST_F(BxdbStandardInput, HasTheLimitOfAFile) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_TRUE(
      holds(expect_with_input(2, {"check", "-", "--max-size", "100"}, db).err, "standard input: more than 100"));
}

TEST_F(BxdbStandardInput, CannotBeTwoInputs) {
  const std::string db = made("a.bxd", small_text());
  const std::string twice = "bxdb: standard input: cannot be read twice; put it into a file first\n";
  EXPECT_EQ(expect_with_input(2, {"diff", "-", "-"}, db).err, twice);
  EXPECT_EQ(expect_with_input(2, {"grid", "-", "--device", "-"}, db).err, twice);
  EXPECT_EQ(expect_with_input(2, {"query", "-"}, db).err, twice) << "questions come from there";
  expect(0, {"diff", db, db});
}

TEST_F(BxdbStandardInput, CanHoldTheDescriptionOfADevice) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string device = made("six.npd", description_of_six());
  EXPECT_EQ(expect_with_input(0, {"grid", db, "--device", "-"}, device).out,
            expect(0, {"grid", db, "--device", device}).out);
  const std::string faulty = made("faulty.npd", "NP_DEVICE:1\nrows two\n");
  EXPECT_TRUE(holds(expect_with_input(2, {"grid", db, "--device", "-"}, faulty).err, "standard input:2: expected"));
}

TEST_F(BxdbStandardOutput, IsWrittenByConvertWithTheBytesOfTheFile) {
  const std::string db = made("a.bxd", small_text());
  EXPECT_EQ(expect(0, {"convert", db, "-", "--form", "text"}).out, small_text());
  expect(0, {"convert", db, file("b.bxd"), "--form", "binary"});
  // References of binary files are addresses, so their trees are compared. A byte 13 before each 10 would be seen.
  const std::string binary = made("c.bxd", expect(0, {"convert", db, "-", "--form", "binary"}).out);
  EXPECT_EQ(read_file(binary).size(), read_file(file("b.bxd")).size());
  expect(0, {"diff", binary, db});
  EXPECT_EQ(expect_with_input(0, {"convert", "-", "-", "--form", "text"}, binary).out, small_text());
  EXPECT_FALSE(std::filesystem::exists(file("-")));
}

TEST_F(BxdbStandardOutput, GetsNothingOfAConversionThatIsRefused) {
  const outcome bad = expect_with_input(2, {"convert", "-", "-", "--form", "text"}, made("a", "BX_DB:A\nno\n"));
  EXPECT_EQ(bad.out, "");
  EXPECT_TRUE(holds(bad.err, "standard input: error: line 2"));
  const outcome lossy = expect(1, {"convert", made("b.bxd", small_text()), "-", "--form", "compressed"});
  EXPECT_EQ(lossy.out, "");
  EXPECT_TRUE(holds(lossy.err, "bxdb: standard output: not written"));
}

TEST_F(BxdbStandardOutput, IsWrittenByGenerateWithoutADescription) {
  const words options = {"--columns", "5", "--rows", "4", "--form", "text"};
  words line = {"generate", "-"};
  line.insert(line.end(), options.begin(), options.end());
  const std::string streamed = expect(0, line).out;
  line[1] = file("a.bxd");
  expect(0, line);
  EXPECT_EQ(streamed, read_file(file("a.bxd")));
  EXPECT_FALSE(std::filesystem::exists("-.npd"));
  EXPECT_FALSE(std::filesystem::exists(".npd"));
}

}  // namespace
