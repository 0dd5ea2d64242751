// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Descriptions of devices whose databases are given by symbolic links, and what is no file in their place.
#include <sys/stat.h>

#include "bxdb_runner.h"
#include "tile_files.h"

namespace {

using namespace test;
namespace fs = std::filesystem;

const std::string other_device = "NP_DEVICE:1\nrows 1 0 5\ncolumns 1 0 5\n";

class BxdbLinks : public ToolTest {
 protected:
  /// The folder "st" and the link "l.bxd" to st/x.bxd, which is not there yet.
  void make_link() const {
    fs::create_directory(file("st"));
    fs::create_symlink("st/x.bxd", file("l.bxd"));
  }

  std::string pipe(const std::string& name) const {
    EXPECT_EQ(mkfifo(file(name).c_str(), 0600), 0);
    return file(name);
  }
};

TEST_F(BxdbLinks, AGeneratedDeviceIsDescribedBesideTheFileThatTheLinkLeadsTo) {
  make_link();
  fs::create_symlink("l.bxd", file("further.bxd"));
  for (const char* link : {"l.bxd", "further.bxd"}) {
    EXPECT_EQ(expect(0, {"generate", file(link)}).err, "");
    EXPECT_TRUE(fs::exists(file("st/x.npd"))) << link;
    EXPECT_FALSE(fs::exists(file("l.npd")));
    EXPECT_FALSE(fs::exists(file("further.npd")));
    fs::remove(file("st/x.npd"));
  }
  EXPECT_TRUE(fs::is_symlink(file("l.bxd")));
}

TEST_F(BxdbLinks, AnotherDescriptionBesideThatFileIsReplacedOnlyByForce) {
  make_link();
  for (const std::string& bytes : {other_device, std::string("notes\n")}) {
    made("st/x.npd", bytes);
    EXPECT_TRUE(holds(expect(2, {"generate", file("l.bxd")}).err, "st/x.npd: not replaced: "));
    EXPECT_EQ(read_file(file("st/x.npd")), bytes);
    EXPECT_FALSE(fs::exists(file("st/x.bxd")));
  }
  expect(0, {"generate", file("l.bxd"), "--force"});
  EXPECT_NE(read_file(file("st/x.npd")), "notes\n");
}

TEST_F(BxdbLinks, AConversionTakesTheDescriptionFromFileToFile) {
  make_link();
  expect(0, {"generate", file("src.bxd")});
  EXPECT_TRUE(holds(expect(0, {"convert", file("src.bxd"), file("l.bxd"), "--form", "text"}).err, "st/x.npd: written"));
  EXPECT_EQ(read_file(file("st/x.npd")), read_file(file("src.npd")));
  made("st/x.npd", other_device);
  EXPECT_TRUE(holds(expect(0, {"convert", file("src.bxd"), file("l.bxd"), "--form", "text"}).err,
                    "st/x.npd: not replaced: it is another file than"));
  EXPECT_EQ(read_file(file("st/x.npd")), other_device);
  expect(0, {"convert", file("l.bxd"), file("back.bxd"), "--form", "binary"});
  EXPECT_EQ(read_file(file("back.npd")), other_device);
  made("l.npd", description_of_six());
  expect(0, {"convert", file("l.bxd"), file("near.bxd"), "--form", "binary"});
  EXPECT_EQ(read_file(file("near.npd")), description_of_six()) << "the one beside the name comes first";
}

TEST_F(BxdbLinks, AGridLooksBesideTheNameAndThenBesideTheFile) {
  make_link();
  made("st/x.bxd", text_of_tiles(five_tiles()));
  made("st/x.npd", description_of_six());
  EXPECT_EQ(expect(0, {"grid", file("l.bxd")}).err, "");
  made("l.npd", "no description\n");
  EXPECT_TRUE(holds(expect(2, {"grid", file("l.bxd")}).err, "l.npd:1: expected"));
  EXPECT_TRUE(holds(expect(2, {"convert", file("l.bxd"), file("st/x.npd"), "--form", "text"}).err,
                    "it is the device description of"));
}

TEST_F(BxdbLinks, APipeInTheDescriptionsPlaceIsNeitherReadNorWritten) {
  const std::string db = made("a.bxd", text_of_tiles(five_tiles()));
  const std::string place = pipe("a.npd");
  EXPECT_TRUE(holds(expect(0, {"grid", db}).err, "there is no description of the device"));
  EXPECT_TRUE(holds(expect(2, {"generate", db}).err, "a.npd: not replaced: it is no device description"));
  EXPECT_TRUE(holds(expect(2, {"generate", db, "--force"}).err, "a.npd: not written: "));
  EXPECT_EQ(read_file(db), text_of_tiles(five_tiles()));
  made("src.bxd", text_of_tiles(five_tiles()));
  made("src.npd", description_of_six());
  EXPECT_TRUE(holds(expect(0, {"convert", file("src.bxd"), db, "--form", "text"}).err, "a.npd: not replaced: "));
  EXPECT_TRUE(fs::is_fifo(place));
}

}  // namespace
