// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "packing_formats.h"

#include <filesystem>

#include "bxdb_runner.h"
#include "program.h"

namespace {

using namespace test;

/// One packing after the other.
class BxdbPacking : public ToolTest, public testing::WithParamInterface<packing_format> {
 protected:
  static std::string packed(const std::string& bytes) { return GetParam().pack(bytes); }
  static std::string ending(const std::string& name) { return name + GetParam().ending; }
};

INSTANTIATE_TEST_SUITE_P(All, BxdbPacking, testing::ValuesIn(packings()),
                         [](const testing::TestParamInfo<packing_format>& format) { return format.param.name; });

TEST_P(BxdbPacking, PackedFilesAreReadAsTheyAreWhateverTheirName) {
  const nlohmann::json info = json_of(0, {"info", made("a", packed(small_text()))});
  EXPECT_EQ(info["packing"], GetParam().name);
  EXPECT_EQ(info["wires"], 8);
  EXPECT_EQ(info["bytes"], small_text().size());
  EXPECT_EQ(info["bytes_on_disk"], std::filesystem::file_size(file("a")));
}

TEST_P(BxdbPacking, EveryReadingCommandTakesPackedFiles) {
  const std::string db = made(ending("a.bxd"), packed(small_text()));
  const std::string other = made("other", packings().front().pack(small_text()));
  expect(0, {"check", db});
  expect(0, {"print", db});
  expect(0, {"find", db, "J0"});
  expect(0, {"at", db, "1", "1"});
  expect(0, {"diff", db, other});
}

TEST_P(BxdbPacking, SeveralMembersOrFramesFollowEachOther) {
  const std::string text = small_text();
  expect(0, {"check", made("a", packed(text.substr(0, 100)) + packed(text.substr(100)))});
  const std::string skippable_frame("\x5a\x2a\x4d\x18\x02\x00\x00\x00hi", 10);
  if (GetParam().name == "zstd") expect(0, {"check", made("b", skippable_frame + packed(text))});
}

TEST_P(BxdbPacking, OutputsArePackedAsTheirNamesSay) {
  const std::string db = made("a.bxd", small_text());
  expect(0, {"convert", db, file(ending("b.bxd")), "--form", "text"});
  EXPECT_EQ(GetParam().unpack(read_file(file(ending("b.bxd")))), small_text());
  expect(0, {"generate", file("g.bxd"), "--columns", "5", "--rows", "5"});
  expect(0, {"generate", file(ending("g.bxd")), "--columns", "5", "--rows", "5"});
  expect(0, {"diff", file("g.bxd"), file(ending("g.bxd"))});
}

TEST_P(BxdbPacking, DataCutOffAnywhereIsInvalidAndNamesTheFileAndThePlace) {
  const std::string whole = packed(small_text());
  for (std::size_t length = 4; length < whole.size(); length += 7 * start_stride) {
    const std::string cut = made("cut", whole.substr(0, length));
    const outcome bad = expect(1, {"check", cut});
    EXPECT_TRUE(holds(bad.out, cut + ": error: byte " + std::to_string(length) + ": " + GetParam().name +
                                   " data damaged: it ends too early"))
        << bad.out;
    EXPECT_TRUE(holds(bad.out, cut + ": invalid: damaged " + GetParam().name + " data; 1 error"));
    EXPECT_EQ(bad.err, "");
    const outcome refused = expect(2, {"info", cut});
    EXPECT_TRUE(holds(refused.err, cut + ": " + GetParam().name + " data damaged at byte ")) << refused.err;
  }
}

TEST_P(BxdbPacking, DamagedDataIsToldAsJson) {
  const std::string whole = packed(small_text());
  const nlohmann::json bad = json_of(1, {"check", made("cut", whole.substr(0, whole.size() - 5))});
  EXPECT_EQ(bad["packing"], GetParam().name);
  EXPECT_EQ(bad["bytes_on_disk"], whole.size() - 5);
  EXPECT_TRUE(bad["bytes"].is_null());
  EXPECT_TRUE(bad["form"].is_null());
  EXPECT_EQ(bad["loadable"], false);
  EXPECT_EQ(bad["errors"], 1);
  EXPECT_EQ(bad["faults"][0]["offset"], whole.size() - 5);
  EXPECT_EQ(bad["faults"][0]["message"], GetParam().name + " data damaged: it ends too early");
  EXPECT_TRUE(json_of(1, {"check", file("cut"), "--most", "0"})["faults"].empty());
}

TEST_P(BxdbPacking, SurplusBytesAreAFailure) { expect(2, {"info", made("a", packed(small_text()) + "more")}); }

TEST_P(BxdbPacking, AFileThatUnpacksToMoreThanTheLimitIsRefused) {
  const outcome refused = expect(2, {"check", made("bomb", packed(std::string(3 << 20, '\0'))), "--max-size", "1M"});
  EXPECT_TRUE(holds(refused.err, file("bomb") + ": more than 1048576 bytes unpacked")) << refused.err;
  const std::string size = std::to_string(small_text().size());
  expect(0, {"check", made("fits", packed(small_text())), "--max-size", size});
}

class BxdbGzip : public ToolTest {};

TEST_F(BxdbGzip, AChangedByteIsAFailure) {
  std::string gzip = packings().front().pack(small_text());
  gzip[gzip.size() - 6] ^= 1;  // in the checksum
  EXPECT_TRUE(holds(expect(2, {"info", made("changed", gzip)}).err, file("changed") + ": gzip data damaged"));
}

}  // namespace
