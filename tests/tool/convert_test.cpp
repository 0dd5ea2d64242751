// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bxdb_runner.h"
#include "qelmoext.h"

namespace {

using namespace test;

class BxdbConvert : public ToolTest {
 protected:
  std::size_t files_in_folder() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder_.path())) ++count;
    return count;
  }
};

TEST_F(BxdbConvert, TextToBinaryToTextGivesTheSameBytes) {
  expect(0, {"convert", made("a.bxd", small_text()), file("b.bxd"), "--form", "binary"});
  expect(0, {"convert", file("b.bxd"), file("c.bxd"), "--form", "text"});
  EXPECT_EQ(read_file(file("b.bxd")).substr(0, 8), "BX_DB:B\n");
  EXPECT_EQ(read_file(file("c.bxd")), small_text());
}

TEST_F(BxdbConvert, TheBinaryFileLoadsAsTheSameTree) {
  expect(0, {"convert", made("a.bxd", small_text()), file("b.bxd"), "--form", "binary"});
  const separator kept('$');
  BX_DB a;
  BX_DB b;
  ASSERT_TRUE(a.load(file("a.bxd").c_str()));
  ASSERT_TRUE(b.load(file("b.bxd").c_str()));
  EXPECT_TRUE(qelmodb::same_tree(a, b, qelmodb::content::database));
}

TEST_F(BxdbConvert, DollarsSurviveUnlessCut) {
  const std::string db = made("a.bxd", small_text());
  expect(0, {"convert", db, file("kept.bxd"), "--form", "text"});
  EXPECT_EQ(read_file(file("kept.bxd")), small_text());
  expect(0, {"convert", db, file("cut.bxd"), "--form", "text", "--cut"});
  EXPECT_EQ(read_file(file("cut.bxd")), replaced(replaced(small_text(), "A$1", "A"), "A$2", "A"));
}

TEST_F(BxdbConvert, AGridFileStaysAGridFile) {
  BX_DB tree;
  ASSERT_TRUE(tree.load(made("a.bxd", small_text()).c_str()));
  ASSERT_TRUE(tree.dumpgrid(file("a.bxg").c_str(), true));
  expect(0, {"convert", file("a.bxg"), file("b.bxg"), "--form", "binary"});
  expect(0, {"convert", file("b.bxg"), file("c.bxg"), "--form", "text"});
  EXPECT_EQ(read_file(file("c.bxg")), read_file(file("a.bxg")));
  EXPECT_EQ(json_of(0, {"info", file("b.bxg")})["content"], "grid");
  expect(0, {"convert", file("b.bxg"), file("d.bin"), "--form", "binary"});
  EXPECT_EQ(json_of(0, {"info", "--grid-file", file("d.bin")})["instances"], 4);
}

TEST_F(BxdbConvert, ADatabaseIsNotWrittenUnderTheNameOfAGridFile) {
  const outcome refused = expect(2, {"convert", made("a.bxd", small_text()), file("b.bxg"), "--form", "text"});
  EXPECT_TRUE(holds(refused.err, file("b.bxg")));
  EXPECT_FALSE(std::filesystem::exists(file("b.bxg")));
}

TEST_F(BxdbConvert, NamesThatTheFormCannotHoldAreListedAndTheOutputStays) {
  BX_DB tree("root", 0, 0, 9, 9);
  const std::string long_name(100, 'n');
  tree.addinstance(new BX_INSTANCE(long_name.c_str(), 0, 0, 1, 1));
  tree.addinstance(new BX_INSTANCE("quo\"te", 0, 2, 1, 3));
  ASSERT_TRUE(tree.dumpgrid(file("a.bxg").c_str(), false));
  const std::string out = made("out.bxg", "old content");
  const outcome refused = expect(1, {"convert", file("a.bxg"), out, "--form", "text"});
  EXPECT_TRUE(holds(refused.err, "root/" + long_name + ": ")) << refused.err;
  EXPECT_TRUE(holds(refused.err, "root/quo\"te: ")) << refused.err;
  EXPECT_TRUE(holds(refused.err, out + ": not written: 2 names")) << refused.err;
  EXPECT_EQ(read_file(out), "old content");
  expect(0, {"convert", file("a.bxg"), out, "--form", "binary"});
}

TEST_F(BxdbConvert, AQuoteInAWireNameOfABinaryFileIsRefusedInText) {
  BX_DB tree("root", 0, 0, 9, 9);
  const BX_WIRE wire("w\"", 1, 2);
  tree.addwire(&wire);
  ASSERT_TRUE(tree.dump(file("a.bxd").c_str(), false));
  EXPECT_TRUE(holds(expect(1, {"convert", file("a.bxd"), file("b.bxd"), "--form", "text"}).err, "root/w\": "));
  EXPECT_FALSE(std::filesystem::exists(file("b.bxd")));
}

TEST_F(BxdbConvert, AFileCanReplaceItself) {
  const std::string db = made("a.bxd", small_text());
  expect(0, {"convert", db, db, "--form", "binary"});
  expect(0, {"convert", db, db, "--form", "text"});
  EXPECT_EQ(read_file(db), small_text());
}

TEST_F(BxdbConvert, AnOutputThatCannotBeMadeIsNamed) {
  const std::string db = made("a.bxd", small_text());
  for (const std::string& out : {db + "/below.bxd", folder_.name(), file("no/such/folder.bxd")}) {
    EXPECT_TRUE(holds(expect(2, {"convert", db, out, "--form", "text"}).err, out + ":"));
  }
}

TEST_F(BxdbConvert, ADamagedInputLeavesTheOutputAloneAndNoFileBehind) {
  const std::string db = made("a.bxd", small_text().substr(0, 300));
  const std::string out = made("out.bxd", "old content");
  const outcome first = expect(2, {"convert", db, out, "--form", "binary"});
  EXPECT_TRUE(holds(first.err, db + ": error: line ")) << first.err;
  EXPECT_EQ(read_file(out), "old content");
  EXPECT_EQ(files_in_folder(), 4U);  // input, output, what the program printed on its two outputs
}

TEST_F(BxdbConvert, TheDescriptionBesideAFileIsTakenAlong) {
  expect(0, {"generate", file("a.bxd"), "--columns", "6"});
  const words line = {"convert", file("a.bxd"), file("b.bxd.gz"), "--form", "text"};
  EXPECT_EQ(expect(0, line).err, "bxdb: " + file("b.npd") + ": written, a copy of " + file("a.npd") + "\n");
  EXPECT_EQ(read_file(file("b.npd")), read_file(file("a.npd")));
  EXPECT_EQ(expect(0, line).err, "") << "it stands there";
  EXPECT_EQ(expect(0, {"convert", file("a.bxd"), file("a.bxd.gz"), "--form", "text"}).err, "") << "it is the same file";
}

TEST_F(BxdbConvert, AnotherFileInTheDescriptionsPlaceStaysAndIsToldOf) {
  expect(0, {"generate", file("a.bxd"), "--columns", "6"});
  for (const char* other : {"NP_DEVICE:1\nrows 1 0 5\ncolumns 1 0 5\n", "a text of somebody's\n"}) {
    made("b.npd", other);
    EXPECT_EQ(expect(0, {"convert", file("a.bxd"), file("b.bxd"), "--form", "text"}).err,
              "bxdb: " + file("b.npd") + ": not replaced: it is another file than " + file("a.npd") +
                  "; remove it, or copy that one there\n");
    EXPECT_EQ(read_file(file("b.npd")), other);
    expect(0, {"check", file("b.bxd")});
  }
}

TEST_F(BxdbConvert, AFaultyDescriptionIsNotTakenAlong) {
  const std::string db = made("a.bxd", small_text());
  made("a.npd", "NP_DEVICE:1\nrows two\n");
  const outcome told = expect(0, {"convert", db, file("b.bxd"), "--form", "binary"});
  EXPECT_TRUE(told.err.starts_with("bxdb: " + file("b.npd") + ": not written: " + file("a.npd") + ":2: ")) << told.err;
  EXPECT_EQ(lines_of(told.err), 1U);
  EXPECT_FALSE(std::filesystem::exists(file("b.npd")));
}

}  // namespace
