// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Outputs that are inputs, however their names are spelled.
#include "bxdb_runner.h"
#include "tile_files.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

class BxdbSameFiles : public ToolTest {
 protected:
  /// Names of a file: its own, one with a detour, and a hard link.
  words spellings_of(const std::string& name) const {
    fs::create_directories(file("folder"));
    fs::remove(file("hard"));
    fs::create_hard_link(file(name), file("hard"));
    return {file(name), file("folder/../" + name), file("./" + name), file("hard")};
  }

  /// The command is refused, and the file stays what it is.
  void expect_refused(const words& arguments, const std::string& name, const std::string& why) const {
    const std::string before = read_file(file(name));
    const outcome refused = expect(2, arguments);
    EXPECT_TRUE(holds(refused.err, ": not written: " + why)) << refused.err;
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(read_file(file(name)), before);
  }
};

TEST_F(BxdbSameFiles, APictureDoesNotReplaceTheDatabase) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  for (const std::string& name : spellings_of("a.bxd")) {
    expect_refused({"grid", db, "--png", name}, "a.bxd", "it is the same file as " + db);
    expect_refused({"grid", name, "--svg", db}, "a.bxd", "it is the same file as " + name);
  }
}

TEST_F(BxdbSameFiles, APictureDoesNotReplaceADescription) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  made("six.npd", description_of_six());
  for (const std::string& name : spellings_of("six.npd")) {
    expect_refused({"grid", db, "--device", file("six.npd"), "--svg", name}, "six.npd", "it is the same file as ");
  }
  made("a.npd", description_of_six());
  for (const std::string& name : spellings_of("a.npd")) {
    expect_refused({"grid", db, "--png", name}, "a.npd", "it is the device description of " + db);
    expect_refused({"grid", db, "--derive-device", "--png", name}, "a.npd", "it is the device description of " + db);
  }
}

TEST_F(BxdbSameFiles, TwoPicturesDoNotReplaceEachOther) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  made("old", "old content");
  for (const std::string& name : spellings_of("old")) {
    expect_refused({"grid", db, "--png", file("old"), "--svg", name}, "old", "");
  }
  for (const std::string& name : {file("new"), file("folder/../new")}) {
    expect(2, {"grid", db, "--png", file("new"), "--svg", name});
    EXPECT_FALSE(fs::exists(file("new")));
  }
  EXPECT_TRUE(holds(expect(2, {"grid", db, "--png", "-", "--svg", "-"}).err, "bxdb: standard output: not written: "));
}

TEST_F(BxdbSameFiles, APictureDoesNotGoWhereTheAnswerGoes) {
  const std::string db = made("a.bxd", text_of_tiles(six_tiles()));
  for (const words& answer : std::vector<words>{{"--json"}, {"--extrema"}, {"--row", "0", "--col", "0"}}) {
    words line = {"grid", db, "--svg", "-"};
    line.insert(line.end(), answer.begin(), answer.end());
    EXPECT_EQ(expect(2, line).out, "");
  }
}

TEST_F(BxdbSameFiles, AConversionDoesNotReplaceTheDescriptionOfItsInput) {
  const std::string db = made("a.bxd", small_text());
  made("a.npd", description_of_six());
  for (const std::string& name : spellings_of("a.npd")) {
    expect_refused({"convert", db, name, "--form", "text"}, "a.npd", "it is the device description of " + db);
  }
  expect(0, {"convert", db, made("b.npd", "of another"), "--form", "text"});
}

TEST_F(BxdbSameFiles, AConversionMayReplaceItsInputUnderAnyOfItsNames) {
  const std::string db = made("a.bxd", small_text());
  for (const std::string& name : spellings_of("a.bxd")) {
    expect(0, {"convert", db, name, "--form", "text"});
    EXPECT_EQ(read_file(name), small_text());
  }
}

}  // namespace
