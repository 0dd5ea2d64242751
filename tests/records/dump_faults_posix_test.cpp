// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Dumps that do not fit where they go.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "replaced_file.h"

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

// Lets this process mount file systems that only it sees. False, and errno, where the system does not allow it.
bool may_mount() {
  const std::string user = "0 " + std::to_string(getuid()) + " 1";
  const std::string group = "0 " + std::to_string(getgid()) + " 1";
  if (unshare(CLONE_NEWNS) != 0) {
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    test::write_file("/proc/self/setgroups", "deny");
    test::write_file("/proc/self/uid_map", user);
    test::write_file("/proc/self/gid_map", group);
  }
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

TEST_F(DumpFaults, ADumpToADiskThatIsFullGivesFalseAndTheOldFileIsIntact) {
  constexpr int cannot_mount = 100;
  constexpr int no_child = 255;
  const int end = test::in_child([&] {
    if (!may_mount() || mount("none", folder_.name().c_str(), "tmpfs", 0, "size=400k") != 0) {
      return cannot_mount + errno;
    }
    const std::string name = folder_.file("out");
    const std::string old(200000, 'o');
    for (const test::dump_way& way : test::all_dumps(26000, test::large_device())) {
      SCOPED_TRACE(way.name);
      test::write_file(name, old);
      EXPECT_FALSE(way.write(name));
      EXPECT_EQ(ut_file->geterror(), name + ": cannot write: " + std::strerror(ENOSPC));
      EXPECT_TRUE(test::read_file(name) == old);
      EXPECT_EQ(test::names_in(folder_), std::vector<std::string>{"out"});
      EXPECT_EQ(small_.dump(name.c_str(), true), 1) << "there is room for this one";
      EXPECT_TRUE(test::read_file(name).starts_with(test::text_line));
      EXPECT_EQ(test::names_in(folder_), std::vector<std::string>{"out"});
    }
    std::fflush(nullptr);
    return HasFailure() ? test::child_said_false : test::child_said_true;
  });
  if (end > cannot_mount && end < no_child)
    GTEST_SKIP() << "no small disk can be mounted here: " << std::strerror(end - cannot_mount);
  EXPECT_EQ(end, test::child_said_true);
}

}  // namespace
