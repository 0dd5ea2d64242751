// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Dumps that do not fit where they go.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>

#include "record_bytes.h"

namespace {

class DumpFaults : public testing::Test {
 protected:
  test::temporary_folder folder_;
  BX_DB small_{"TOP", 0, 0, 9, 9};
};

TEST_F(DumpFaults, ADumpToAFullDeviceGivesFalse) {
  ASSERT_TRUE(std::filesystem::exists("/dev/full"));
  EXPECT_EQ(small_.dump("/dev/full", true), 0);
  EXPECT_EQ(small_.dump("/dev/full", false), 0);
  EXPECT_EQ(ut_file->getcount(), 0);
}

// A limit on the size of files stands for a disk that fills up half way.
TEST_F(DumpFaults, ADumpThatFillsTheDiskGivesFalseAndTheOldFileIsIntact) {
  const std::string name = folder_.file("out.bxd");
  test::write_file(name, "old");
  for (int i = 0; i < 20000; ++i) small_.addinstance(new BX_INSTANCE("C", 0, i, 4, i + 1));
  for (const bool ascii : {true, false}) {
    EXPECT_EQ(test::in_child([&] {
                signal(SIGXFSZ, SIG_IGN);
                const rlimit little{100000, 100000};
                setrlimit(RLIMIT_FSIZE, &little);
                return small_.dump(name.c_str(), ascii) != 0 ? test::child_said_true : test::child_said_false;
              }),
              test::child_said_false);
    EXPECT_EQ(test::read_file(name), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
  }
}

}  // namespace
