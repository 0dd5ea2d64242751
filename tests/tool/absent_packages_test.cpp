// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A tool that was built without zstd and cairo says so, and writes nothing.
#include <filesystem>

#include "bxdb_runner.h"

namespace {

using namespace test;

class BxdbWithoutPackages : public ToolTest {};

TEST_F(BxdbWithoutPackages, NeitherReadsNorWritesZstd) {
  const outcome read = expect(2, {"info", made("a", "\x28\xb5\x2f\xfd" + small_text())});
  EXPECT_TRUE(holds(read.err, file("a") + ": packed with zstd, which this build of bxdb was made without")) << read.err;
  const outcome written = expect(2, {"convert", made("b", small_text()), file("c.zst"), "--form", "text"});
  EXPECT_TRUE(holds(written.err, "cannot pack with zstd")) << written.err;
  EXPECT_FALSE(std::filesystem::exists(file("c.zst")));
}

TEST_F(BxdbWithoutPackages, DrawsNoGrids) {
  expect(0, {"generate", file("d.bxd"), "--columns", "5", "--rows", "5"});
  const outcome drawn = expect(2, {"grid", file("d.bxd"), "BASIC_ASS", "--png", file("d.png")});
  EXPECT_TRUE(holds(drawn.err, "cannot be drawn: this build of bxdb was made without cairo")) << drawn.err;
  EXPECT_FALSE(std::filesystem::exists(file("d.png")));
}

}  // namespace
