// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Devices of the system in the place of files, and its words for what is wrong.
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>

#include "bxdb_runner.h"

namespace {

using namespace test;

class BxdbDevices : public ToolTest {};
class BxdbFaults : public ToolTest {};

TEST_F(BxdbDevices, ThatAreFullFailPackedOutputs) {
  const std::string full = file("full.bxd.gz");
  std::filesystem::create_symlink("/dev/full", full);
  EXPECT_TRUE(holds(expect(2, {"convert", made("a.bxd", small_text()), full, "--form", "text"}).err, full + ":"));
  const outcome generated = expect(2, {"generate", full, "--columns", "9", "--rows", "9"});
  EXPECT_TRUE(holds(generated.err, full + ":")) << generated.err;
  EXPECT_TRUE(holds(generated.err, "No space left on device")) << generated.err;
}

TEST_F(BxdbDevices, HaveNoDescriptionBeside) {
  expect(0, {"generate", "/dev/null"});
  EXPECT_FALSE(std::filesystem::exists("/dev/null.npd"));
  std::filesystem::create_symlink("/dev/null", file("link.bxd"));
  expect(0, {"generate", file("link.bxd")});
  EXPECT_FALSE(std::filesystem::exists(file("link.npd")));
}

TEST_F(BxdbDevices, ThatAreFullFailGeneratedDevices) {
  const outcome full = expect(2, {"generate", "/dev/full"});
  EXPECT_TRUE(holds(full.err, "/dev/full: cannot write: No space left on device")) << full.err;
}

TEST_F(BxdbDevices, ThatAreFullFailConversions) {
  const std::string db = made("a.bxd", small_text());
  for (const char* form : {"text", "binary"}) {
    const outcome full = expect(2, {"convert", db, "/dev/full", "--form", form});
    EXPECT_TRUE(holds(full.err, "/dev/full")) << full.err;
    EXPECT_TRUE(holds(full.err, "No space left on device")) << full.err;
  }
}

TEST_F(BxdbDevices, ThatAreFullFailCompressedOutputs) {
  expect(0, {"generate", file("a.bxd"), "--columns", "5", "--rows", "5"});
  const outcome full = expect(2, {"convert", file("a.bxd"), "/dev/full", "--form", "compressed"});
  EXPECT_TRUE(holds(full.err, "/dev/full: cannot write: No space left on device")) << full.err;
}

TEST_F(BxdbDevices, ThatAreFullFailStandardOutput) {
  const std::string db = made("a.bxd", small_text());
  const std::string command = std::string(BXDB_PROGRAM) + " print " + db + " > /dev/full 2> " + file("err");
  const int status = std::system(command.c_str());
  EXPECT_EQ(WEXITSTATUS(status), 2);
  EXPECT_TRUE(holds(read_file(file("err")), "bxdb: standard output: cannot write"));
}

TEST_F(BxdbDevices, ThatNeverEndAreRefusedAtTheLimit) {
  EXPECT_TRUE(holds(expect(2, {"check", "/dev/zero", "--max-size", "4M"}).err, "/dev/zero: more than 4194304 bytes"));
}

TEST_F(BxdbFaults, AreToldInTheWordsOfTheSystem) {
  EXPECT_TRUE(holds(expect(2, {"info", file("missing.bxd")}).err, "No such file or directory"));
  EXPECT_TRUE(holds(expect(2, {"info", folder_.name()}).err, "Is a directory"));
  EXPECT_TRUE(holds(expect(2, {"info", made("a", "x") + "/b"}).err, "Not a directory"));
}

}  // namespace
