// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <zlib.h>

#include "bxdb_runner.h"

namespace {

using namespace test;

class BxdbPacking : public ToolTest {
 protected:
  std::string gzipped(const std::string& bytes) const {
    const std::string name = file(".packed");
    gzFile packed = gzopen(name.c_str(), "wb");
    EXPECT_EQ(gzwrite(packed, bytes.data(), static_cast<unsigned>(bytes.size())), static_cast<int>(bytes.size()));
    gzclose(packed);
    return read_file(name);
  }

  std::string gunzipped(const std::string& name) const {
    gzFile packed = gzopen(name.c_str(), "rb");
    std::string bytes(1 << 20, '\0');
    const int got = gzread(packed, bytes.data(), static_cast<unsigned>(bytes.size()));
    EXPECT_GT(got, 0);
    gzclose(packed);
    bytes.resize(static_cast<std::size_t>(got));
    return bytes;
  }
};

TEST_F(BxdbPacking, PackedFilesAreReadAsTheyAreWhateverTheirName) {
  const nlohmann::json gzip = json_of(0, {"info", made("a", gzipped(small_text()))});
  EXPECT_EQ(gzip["packing"], "gzip");
  EXPECT_EQ(gzip["wires"], 8);
  EXPECT_EQ(gzip["bytes"], small_text().size());
  EXPECT_EQ(gzip["bytes_on_disk"], std::filesystem::file_size(file("a")));
}

TEST_F(BxdbPacking, EveryReadingCommandTakesPackedFiles) {
  const std::string db = made("a.bxd.gz", gzipped(small_text()));
  const std::string other = made("other", gzipped(small_text()));
  expect(0, {"check", db});
  expect(0, {"print", other});
  expect(0, {"find", db, "J0"});
  expect(0, {"at", other, "1", "1"});
  expect(0, {"diff", db, other});
}

TEST_F(BxdbPacking, SeveralMembersFollowEachOther) {
  const std::string text = small_text();
  const std::string head = text.substr(0, 100);
  const std::string tail = text.substr(100);
  expect(0, {"check", made("a", gzipped(head) + gzipped(tail))});
}

TEST_F(BxdbPacking, OutputsArePackedAsTheirNamesSay) {
  const std::string db = made("a.bxd", small_text());
  expect(0, {"convert", db, file("b.bxd.gz"), "--form", "text"});
  EXPECT_EQ(gunzipped(file("b.bxd.gz")), small_text());
  expect(0, {"generate", file("g.bxd.gz"), "--columns", "5", "--rows", "5"});
  expect(0, {"generate", file("g.bxd"), "--columns", "5", "--rows", "5"});
  expect(0, {"diff", file("g.bxd.gz"), file("g.bxd")});
}

TEST_F(BxdbPacking, DataCutOffAnywhereIsAFailureThatNamesTheFile) {
  const std::string packed = gzipped(small_text());
  for (std::size_t length = 4; length < packed.size(); length += 7) {
    const outcome bad = expect(2, {"check", made("cut", packed.substr(0, length))});
    EXPECT_TRUE(holds(bad.err, file("cut") + ": ")) << bad.err;
    EXPECT_TRUE(holds(bad.err, "data damaged at byte")) << bad.err;
  }
}

TEST_F(BxdbPacking, ChangedOrSurplusBytesAreAFailure) {
  std::string gzip = gzipped(small_text());
  expect(2, {"info", made("surplus", gzip + "more")});
  gzip[gzip.size() - 6] ^= 1;  // in the checksum
  EXPECT_TRUE(holds(expect(2, {"info", made("changed", gzip)}).err, file("changed") + ": gzip data damaged"));
}

TEST_F(BxdbPacking, AFileThatUnpacksToMoreThanTheLimitIsRefused) {
  const std::string zeros(3 << 20, '\0');
  const outcome refused = expect(2, {"check", made("bomb", gzipped(zeros)), "--max-size", "1M"});
  EXPECT_TRUE(holds(refused.err, file("bomb") + ": more than 1048576 bytes unpacked")) << refused.err;
  const std::string size = std::to_string(small_text().size());
  expect(0, {"check", made("fits", gzipped(small_text())), "--max-size", size});
}

}  // namespace
