// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <zstd.h>

#include "bxdb_runner.h"

namespace {

using namespace test;

class BxdbZstd : public ToolTest {
 protected:
  static std::string zstandard(const std::string& bytes) {
    std::string packed(ZSTD_compressBound(bytes.size()), '\0');
    packed.resize(ZSTD_compress(packed.data(), packed.size(), bytes.data(), bytes.size(), 3));
    return packed;
  }

  static std::string unzstandard(const std::string& packed) {
    std::string bytes(1 << 20, '\0');
    const std::size_t got = ZSTD_decompress(bytes.data(), bytes.size(), packed.data(), packed.size());
    EXPECT_EQ(ZSTD_isError(got), 0U);
    bytes.resize(got);
    return bytes;
  }
};

TEST_F(BxdbZstd, PackedFilesAreReadAsTheyAreWhateverTheirName) {
  const nlohmann::json zstd = json_of(0, {"info", made("b", zstandard(small_text()))});
  EXPECT_EQ(zstd["packing"], "zstd");
  EXPECT_EQ(zstd["wires"], 8);
  EXPECT_EQ(zstd["bytes"], small_text().size());
}

TEST_F(BxdbZstd, SeveralFramesFollowEachOther) {
  const std::string text = small_text();
  expect(0, {"check", made("b", zstandard(text.substr(0, 100)) + zstandard(text.substr(100)))});
  expect(0, {"check", made("c", std::string("\x5a\x2a\x4d\x18\x02\x00\x00\x00hi", 10) + zstandard(text))});
}

TEST_F(BxdbZstd, OutputsArePackedAsTheirNamesSay) {
  const std::string db = made("a.bxd", small_text());
  expect(0, {"convert", db, file("b.bxd.zst"), "--form", "text"});
  EXPECT_EQ(unzstandard(read_file(file("b.bxd.zst"))), small_text());
  expect(0, {"generate", file("g.bxd.gz"), "--columns", "5", "--rows", "5"});
  expect(0, {"generate", file("g.bxd.zst"), "--columns", "5", "--rows", "5"});
  expect(0, {"diff", file("g.bxd.gz"), file("g.bxd.zst")});
}

TEST_F(BxdbZstd, DataCutOffAnywhereIsAFailureThatNamesTheFile) {
  const std::string packed = zstandard(small_text());
  for (std::size_t length = 4; length < packed.size(); length += 7) {
    const outcome bad = expect(2, {"check", made("cut", packed.substr(0, length))});
    EXPECT_TRUE(holds(bad.err, file("cut") + ": ")) << bad.err;
    EXPECT_TRUE(holds(bad.err, "data damaged at byte")) << bad.err;
  }
}

TEST_F(BxdbZstd, SurplusBytesAreAFailure) { expect(2, {"info", made("z", zstandard(small_text()) + "more")}); }

TEST_F(BxdbZstd, AFileThatUnpacksToMoreThanTheLimitIsRefused) {
  const outcome refused = expect(2, {"check", made("bomb", zstandard(std::string(3 << 20, '\0'))), "--max-size", "1M"});
  EXPECT_TRUE(holds(refused.err, file("bomb") + ": more than 1048576 bytes unpacked")) << refused.err;
}

}  // namespace
