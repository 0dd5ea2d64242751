// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_filemanager.h"

#include <gtest/gtest.h>
#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <vector>

#include "builders.h"

namespace {

namespace fs = std::filesystem;

bool starts_with(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

class FileManager : public testing::Test {
 protected:
  test::temporary_folder folder;
  UT_FILEMANAGER manager;

  bool write(const std::string& name, const std::string& bytes, bool replace = true) {
    UT_PTRFILE file(UT_WRITE);
    if (manager.add_ofile(name.c_str(), UT_WRITE, &file, replace) == nullptr) return false;
    file.write(bytes.data(), static_cast<bx_long>(bytes.size()));
    return manager.rm_ofile(&file);
  }

  // Everything in the folder, so that nothing left behind goes unseen.
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (const auto& entry : fs::directory_iterator(fs::path(folder.file("")))) {
      all.push_back(entry.path().filename().string());
    }
    std::sort(all.begin(), all.end());
    return all;
  }

  void expect_no_reading(const std::string& name, const std::string& why) {
    UT_PTRFILE file(UT_READ);
    EXPECT_EQ(manager.add_ofile(name.c_str(), UT_READ, &file, false), nullptr) << name;
    EXPECT_EQ(manager.geterror(), name + ": cannot open for reading: " + why);
    EXPECT_EQ(manager.getcount(), 0);
  }

  void expect_no_writing(const std::string& name, const std::string& why) {
    for (const bool replace : {true, false}) {
      UT_PTRFILE file(UT_WRITE);
      EXPECT_EQ(manager.add_ofile(name.c_str(), UT_WRITE, &file, replace), nullptr) << name;
      EXPECT_EQ(manager.geterror(), name + ": cannot open for writing: " + why);
      EXPECT_EQ(manager.getcount(), 0);
    }
  }
};

using strings = std::vector<std::string>;

TEST_F(FileManager, ReadsAFile) {
  test::write_file(folder.file("in"), "abc\ndef\n");
  UT_PTRFILE file(UT_READ);
  EXPECT_STREQ(manager.geterror(), "");
  EXPECT_EQ(manager.add_ofile(folder.file("in").c_str(), UT_READ, &file, false), &file);
  EXPECT_EQ(manager.getcount(), 1);
  EXPECT_EQ(file.bytesleft(), 8);
  char line[10];
  EXPECT_EQ(file.readline(line, 10), 1);
  EXPECT_STREQ(line, "abc");
  EXPECT_EQ(file.bytesleft(), 4);
  EXPECT_TRUE(manager.rm_ofile(&file));
  EXPECT_EQ(manager.getcount(), 0);
}

TEST_F(FileManager, ClosedStreamReadsNothingMore) {
  test::write_file(folder.file("in"), "abc\ndef\n");
  UT_PTRFILE file(UT_READ);
  ASSERT_NE(manager.add_ofile(folder.file("in").c_str(), UT_READ, &file, false), nullptr);
  char line[10];
  EXPECT_EQ(file.readline(line, 10), 1);
  EXPECT_TRUE(manager.rm_ofile(&file));
  EXPECT_EQ(file.bytesleft(), 0);
  EXPECT_EQ(file.sread(line, 3), 0);
}

TEST_F(FileManager, WritesAFileThatAppearsWhenItIsWhole) {
  UT_PTRFILE file(UT_WRITE);
  ASSERT_NE(manager.add_ofile(folder.file("out").c_str(), UT_WRITE, &file, true), nullptr);
  file.writeline("text");
  EXPECT_TRUE(file.flush());
  EXPECT_FALSE(fs::exists(folder.file("out")));
  EXPECT_TRUE(manager.rm_ofile(&file));
  EXPECT_EQ(test::read_file(folder.file("out")), "text\n");
  EXPECT_EQ(names(), strings{"out"});
}

TEST_F(FileManager, WritesALargeFileWhole) {
  std::string bytes(3000000, 'x');
  for (std::size_t i = 0; i < bytes.size(); i += 7) bytes[i] = static_cast<char>(i);
  EXPECT_TRUE(write(folder.file("out"), bytes));
  EXPECT_EQ(test::read_file(folder.file("out")), bytes);
}

TEST_F(FileManager, OldFileStaysWholeUntilTheNewOneIs) {
  test::write_file(folder.file("out"), "old");
  UT_PTRFILE file(UT_WRITE);
  ASSERT_NE(manager.add_ofile(folder.file("out").c_str(), UT_WRITE, &file, true), nullptr);
  file.write("new", 3);
  file.flush();
  EXPECT_EQ(test::read_file(folder.file("out")), "old");
  EXPECT_TRUE(manager.rm_ofile(&file));
  EXPECT_EQ(test::read_file(folder.file("out")), "new");
  EXPECT_EQ(names(), strings{"out"});
}

TEST_F(FileManager, NotReplacingCutsTheOldFileAndWritesInPlace) {
  test::write_file(folder.file("out"), "a long old content");
  fs::create_hard_link(folder.file("out"), folder.file("link"));
  EXPECT_TRUE(write(folder.file("out"), "new", false));
  EXPECT_EQ(test::read_file(folder.file("link")), "new");
}

TEST_F(FileManager, AbandonedFileLeavesTheOldOneAndNothingElse) {
  test::write_file(folder.file("out"), "old");
  {
    UT_PTRFILE file(UT_WRITE);
    ASSERT_NE(manager.add_ofile(folder.file("out").c_str(), UT_WRITE, &file, true), nullptr);
    file.write("new", 3);
    file.flush();
  }
  EXPECT_EQ(manager.getcount(), 0);
  EXPECT_EQ(test::read_file(folder.file("out")), "old");
  EXPECT_EQ(names(), strings{"out"});
}

TEST_F(FileManager, DestroyedManagerDiscardsWhatWasNotCommitted) {
  UT_PTRFILE file(UT_WRITE);
  {
    UT_FILEMANAGER other;
    ASSERT_NE(other.add_ofile(folder.file("out").c_str(), UT_WRITE, &file, true), nullptr);
    file.write("new", 3);
  }
  EXPECT_EQ(names(), strings{});
  EXPECT_FALSE(file.flush());
}

TEST_F(FileManager, WriteThatFailedLeavesTheOldFileAndNothingElse) {
  test::write_file(folder.file("out"), "old");
  UT_PTRFILE file(UT_WRITE);
  ASSERT_NE(manager.add_ofile(folder.file("out").c_str(), UT_WRITE, &file, true), nullptr);
  file.write("new", 3);
  file.fail();
  EXPECT_FALSE(manager.rm_ofile(&file));
  EXPECT_TRUE(starts_with(manager.geterror(), folder.file("out") + ": cannot write: ")) << manager.geterror();
  EXPECT_EQ(test::read_file(folder.file("out")), "old");
  EXPECT_EQ(names(), strings{"out"});
}

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

TEST_F(FileManager, DirectoryCanNeitherBeReadNorWritten) {
  fs::create_directory(folder.file("dir"));
  expect_no_reading(folder.file("dir"), "Is a directory");
  expect_no_writing(folder.file("dir"), "Is a directory");
  EXPECT_EQ(names(), strings{"dir"});
}

TEST_F(FileManager, MissingFileCannotBeRead) { expect_no_reading(folder.file("none"), "No such file or directory"); }

TEST_F(FileManager, FileInAMissingFolderCanNeitherBeReadNorWritten) {
  expect_no_reading(folder.file("none/file"), "No such file or directory");
  expect_no_writing(folder.file("none/file"), "No such file or directory");
}

TEST_F(FileManager, PathBelowAFileCanNeitherBeReadNorWritten) {
  test::write_file(folder.file("file"), "x");
  expect_no_reading(folder.file("file/below"), "Not a directory");
  expect_no_writing(folder.file("file/below"), "Not a directory");
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

TEST_F(FileManager, EmptyAndMissingNamesCannotBeOpened) {
  expect_no_reading("", "No such file or directory");
  UT_PTRFILE file(UT_READ);
  EXPECT_EQ(manager.add_ofile(nullptr, UT_READ, &file, false), nullptr);
  UT_PTRFILE out(UT_WRITE);
  EXPECT_EQ(manager.add_ofile("", UT_WRITE, &out, true), nullptr);
  EXPECT_EQ(manager.add_ofile(nullptr, UT_WRITE, &out, true), nullptr);
}

TEST_F(FileManager, NameTooLongForTheSystemNeverSucceedsAndLeavesNothing) {
  EXPECT_FALSE(write(folder.file(std::string(300, 'n')), "x"));
  EXPECT_NE(std::string(manager.geterror()).find("File name too long"), std::string::npos);
  EXPECT_EQ(names(), strings{});
}

TEST_F(FileManager, LongestNameOfTheSystemCanBeWritten) {
  const std::string name(255, 'n');
  EXPECT_TRUE(write(folder.file(name), "x"));
  EXPECT_EQ(names(), strings{name});
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

TEST_F(FileManager, StreamsThatAreNotRegisteredAreNotClosed) {
  UT_PTRFILE file(UT_READ);
  EXPECT_FALSE(manager.rm_ofile(&file));
  EXPECT_FALSE(manager.rm_ofile(nullptr));
  test::write_file(folder.file("in"), "x");
  UT_FILEMANAGER other;
  ASSERT_NE(other.add_ofile(folder.file("in").c_str(), UT_READ, &file, false), nullptr);
  EXPECT_FALSE(manager.rm_ofile(&file));
  EXPECT_TRUE(other.rm_ofile(&file));
  EXPECT_FALSE(other.rm_ofile(&file));
}

TEST_F(FileManager, StreamCanBeBoundAgain) {
  UT_PTRFILE file(UT_WRITE);
  for (const char* name : {"first", "second"}) {
    ASSERT_NE(manager.add_ofile(folder.file(name).c_str(), UT_WRITE, &file, true), nullptr);
    file.writeline(name);
    EXPECT_TRUE(manager.rm_ofile(&file));
  }
  EXPECT_EQ(test::read_file(folder.file("first")), "first\n");
  EXPECT_EQ(test::read_file(folder.file("second")), "second\n");
}

TEST_F(FileManager, FailedStreamBoundAgainStartsAnew) {
  UT_PTRFILE file(UT_WRITE);
  ASSERT_NE(manager.add_ofile(folder.file("first").c_str(), UT_WRITE, &file, true), nullptr);
  file.writeline("lost");
  file.fail();
  EXPECT_FALSE(manager.rm_ofile(&file));
  ASSERT_NE(manager.add_ofile(folder.file("second").c_str(), UT_WRITE, &file, true), nullptr);
  file.writeline("kept");
  EXPECT_TRUE(manager.rm_ofile(&file));
  EXPECT_EQ(test::read_file(folder.file("second")), "kept\n");
  EXPECT_EQ(names(), strings{"second"});
}

TEST_F(FileManager, StreamsLeftOpenAreClosedByCloseLeft) {
  test::write_file(folder.file("in"), "x");
  for (int i = 0; i < 3; ++i) {
    auto* file = new UT_PTRFILE(UT_READ);
    ASSERT_NE(manager.add_ofile(folder.file("in").c_str(), UT_READ, file, false), nullptr);
    manager.leave(file);
  }
  UT_PTRFILE used(UT_READ);
  ASSERT_NE(manager.add_ofile(folder.file("in").c_str(), UT_READ, &used, false), nullptr);
  EXPECT_EQ(manager.getcount(), 4);
  manager.close_left();
  EXPECT_EQ(manager.getcount(), 1);
  manager.close_left();
  EXPECT_TRUE(manager.rm_ofile(&used));
}

TEST_F(FileManager, StreamLeftOpenMayStillBeClosedByItself) {
  test::write_file(folder.file("in"), "x");
  auto file = std::make_unique<UT_PTRFILE>(UT_READ);
  ASSERT_NE(manager.add_ofile(folder.file("in").c_str(), UT_READ, file.get(), false), nullptr);
  manager.leave(file.get());
  EXPECT_TRUE(manager.rm_ofile(file.get()));
  manager.close_left();
  EXPECT_EQ(manager.getcount(), 0);
}

TEST_F(FileManager, StreamsLeftOpenGoWithTheManager) {
  test::write_file(folder.file("in"), "x");
  UT_FILEMANAGER other;
  auto* file = new UT_PTRFILE(UT_READ);
  ASSERT_NE(other.add_ofile(folder.file("in").c_str(), UT_READ, file, false), nullptr);
  other.leave(file);
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

TEST(FileManagerInUse, IsNeverNullAndReplaceable) {
  ASSERT_NE(ut_file, nullptr);
  UT_FILEMANAGER* const built_in = ut_file;
  UT_FILEMANAGER other;
  ut_file = &other;
  EXPECT_EQ(ut_file, &other);
  ut_file = built_in;
}

}  // namespace
