// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_filemanager.h"

#include <memory>

#include "file_manager_fixture.h"

namespace {

using test::FileManager;
namespace fs = std::filesystem;
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
  EXPECT_TRUE(test::starts_with(manager.geterror(), folder.file("out") + ": cannot write: ")) << manager.geterror();
  EXPECT_EQ(test::read_file(folder.file("out")), "old");
  EXPECT_EQ(names(), strings{"out"});
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

TEST_F(FileManager, EmptyAndMissingNamesCannotBeOpened) {
  expect_no_reading("", "No such file or directory");
  UT_PTRFILE file(UT_READ);
  EXPECT_EQ(manager.add_ofile(nullptr, UT_READ, &file, false), nullptr);
  UT_PTRFILE out(UT_WRITE);
  EXPECT_EQ(manager.add_ofile("", UT_WRITE, &out, true), nullptr);
  EXPECT_EQ(manager.add_ofile(nullptr, UT_WRITE, &out, true), nullptr);
}

TEST_F(FileManager, LongestNameOfTheSystemCanBeWritten) {
  const std::string name(255, 'n');
  EXPECT_TRUE(write(folder.file(name), "x"));
  EXPECT_EQ(names(), strings{name});
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

TEST(FileManagerInUse, IsNeverNullAndReplaceable) {
  ASSERT_NE(ut_file, nullptr);
  UT_FILEMANAGER* const built_in = ut_file;
  UT_FILEMANAGER other;
  ut_file = &other;
  EXPECT_EQ(ut_file, &other);
  ut_file = built_in;
}

}  // namespace
