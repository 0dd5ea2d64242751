// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What only these systems have: modes, links, devices, limits.
#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

#include "file_manager_fixture.h"

namespace {

using test::FileManager;
namespace fs = std::filesystem;
using strings = std::vector<std::string>;

TEST_F(FileManager, FileThatMayGrowNoFurtherLeavesTheOldOneAndSaysWhy) {
  test::write_file(folder.file("out"), "old");
  const auto old_handler = signal(SIGXFSZ, SIG_IGN);
  rlimit old_limit{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old_limit), 0);
  rlimit limit = old_limit;
  limit.rlim_cur = 100000;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  const bool whole = write(folder.file("out"), std::string(1000000, 'x'));
  EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &old_limit), 0);
  signal(SIGXFSZ, old_handler);
  EXPECT_FALSE(whole);
  EXPECT_EQ(manager.geterror(), folder.file("out") + ": cannot write: File too large");
  EXPECT_EQ(test::read_file(folder.file("out")), "old");
  EXPECT_EQ(names(), strings{"out"});
}

TEST_F(FileManager, FullDeviceIsAFault) {
  ASSERT_TRUE(fs::exists("/dev/full"));
  EXPECT_FALSE(write("/dev/full", "x"));
  EXPECT_STREQ(manager.geterror(), "/dev/full: cannot write: No space left on device");
  EXPECT_FALSE(write("/dev/full", std::string(1000000, 'x')));
}

TEST_F(FileManager, DeviceIsWrittenDirectly) {
  EXPECT_TRUE(write("/dev/null", "x"));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(FileManager, FileWithoutPermissionCanNeitherBeReadNorWritten) {
  const std::string name = folder.file("file");
  test::write_file(name, "x");
  fs::permissions(name, fs::perms::none);
  fs::permissions(folder.path(), fs::perms::all);
  // The superuser may do everything, so a process that gave up its powers tries.
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct no_powers[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capset, &header, no_powers) != 0) _exit(2);
    expect_no_reading(name, "Permission denied");
    expect_no_writing(name, "Permission denied");
    std::fflush(stdout);
    _exit(HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(FileManager, TargetBehindASymbolicLinkIsReplacedAndTheLinkStays) {
  fs::create_directory(folder.file("dir"));
  test::write_file(folder.file("dir/target"), "old");
  fs::create_symlink("dir/target", folder.file("link"));
  EXPECT_TRUE(write(folder.file("link"), "new"));
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_EQ(test::read_file(folder.file("dir/target")), "new");
  EXPECT_EQ(names(), (strings{"dir", "link"}));
}

TEST_F(FileManager, SymbolicLinkToNothingGetsItsTarget) {
  fs::create_symlink("target", folder.file("link"));
  EXPECT_TRUE(write(folder.file("link"), "new"));
  EXPECT_TRUE(fs::is_symlink(folder.file("link")));
  EXPECT_EQ(test::read_file(folder.file("target")), "new");
}

TEST_F(FileManager, ModeOfTheOldFileIsKept) {
  test::write_file(folder.file("out"), "old");
  for (const auto mode : {fs::perms{0600}, fs::perms{0754}, fs::perms{0666}}) {
    fs::permissions(folder.file("out"), mode);
    EXPECT_TRUE(write(folder.file("out"), "new"));
    EXPECT_EQ(fs::status(folder.file("out")).permissions(), mode);
  }
}

TEST_F(FileManager, ModeOfANewFileFollowsTheMask) {
  const mode_t old = umask(027);
  EXPECT_TRUE(write(folder.file("out"), "new"));
  umask(old);
  EXPECT_EQ(fs::status(folder.file("out")).permissions(), fs::perms{0640});
}

TEST_F(FileManager, StreamsLeftOpenMakeRoomWhenHandlesRunOut) {
  test::write_file(folder.file("in"), "x");
  rlimit old_limit{};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &old_limit), 0);
  rlimit limit = old_limit;
  limit.rlim_cur = 64;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  bool all = true;
  for (int i = 0; i < 200 && all; ++i) {
    auto file = std::make_unique<UT_PTRFILE>(UT_READ);
    all = manager.add_ofile(folder.file("in").c_str(), UT_READ, file.get(), false) != nullptr;
    if (all) manager.leave(file.release());
  }
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &old_limit), 0);
  EXPECT_TRUE(all) << manager.geterror();
  EXPECT_LT(manager.getcount(), 64);
}

TEST_F(FileManager, NameTooLongForTheSystemNeverSucceedsAndLeavesNothing) {
  EXPECT_FALSE(write(folder.file(std::string(300, 'n')), "x"));
  EXPECT_NE(std::string(manager.geterror()).find("File name too long"), std::string::npos);
  EXPECT_EQ(names(), strings{});
}

TEST_F(FileManager, ReaderOfAFileThatIsReplacedStillSeesTheOldOne) {
  test::write_file(folder.file("file"), "old");
  UT_PTRFILE file(UT_READ);
  ASSERT_NE(manager.add_ofile(folder.file("file").c_str(), UT_READ, &file, false), nullptr);
  EXPECT_TRUE(write(folder.file("file"), "new"));
  char bytes[4] = {};
  EXPECT_EQ(file.sread(bytes, 3), 3);
  EXPECT_STREQ(bytes, "old");
  EXPECT_TRUE(manager.rm_ofile(&file));
}

}  // namespace
