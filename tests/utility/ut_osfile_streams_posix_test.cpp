// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Outputs that are no files by their own name: handles, pipes, sockets.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "file_manager_fixture.h"

namespace {

namespace fs = std::filesystem;
using strings = std::vector<std::string>;

std::string name_of_handle(int handle) { return "/dev/fd/" + std::to_string(handle); }

ino_t number_of(const std::string& name) {
  struct stat status {};
  EXPECT_EQ(stat(name.c_str(), &status), 0) << name;
  return status.st_ino;
}

/// A handle that is closed with the object.
class handle {
 public:
  explicit handle(int number) : number_(number) { EXPECT_GE(number, 0); }
  handle(const handle&) = delete;
  handle& operator=(const handle&) = delete;
  ~handle() { close(number_); }

  int number() const { return number_; }

  std::string read_some() const {
    char bytes[64];
    const ssize_t got = read(number_, bytes, sizeof bytes);
    return got > 0 ? std::string(bytes, static_cast<std::size_t>(got)) : std::string();
  }

 private:
  int number_;
};

class OutputStreams : public test::FileManager {};

TEST_F(OutputStreams, AHandleOfARegularFileIsWrittenOnFromWhereItIsAndItsFileStays) {
  test::write_file(folder.file("notes"), "old text");
  const ino_t file = number_of(folder.file("notes"));
  for (const char* form : {"/dev/fd/", "/proc/self/fd/", "/proc/thread-self/fd/"}) {
    test::write_file(folder.file("notes"), "old text");
    const handle appending(open(folder.file("notes").c_str(), O_WRONLY | O_APPEND));
    EXPECT_TRUE(write(form + std::to_string(appending.number()), ", new"));
    EXPECT_EQ(test::read_file(folder.file("notes")), "old text, new") << form;
    const handle placed(open(folder.file("notes").c_str(), O_WRONLY));
    ASSERT_EQ(lseek(placed.number(), 4, SEEK_SET), 4);
    EXPECT_TRUE(write(form + std::to_string(placed.number()), "TE", false));
    EXPECT_EQ(test::read_file(folder.file("notes")), "old TExt, new") << form;
  }
  EXPECT_EQ(number_of(folder.file("notes")), file);
  EXPECT_EQ(names(), strings{"notes"});
}

TEST_F(OutputStreams, ALinkToAHandleIsThatHandle) {
  test::write_file(folder.file("notes"), "old");
  const handle appending(open(folder.file("notes").c_str(), O_WRONLY | O_APPEND));
  fs::create_symlink(name_of_handle(appending.number()), folder.file("link"));
  EXPECT_TRUE(write(folder.file("link"), ", new"));
  EXPECT_EQ(test::read_file(folder.file("notes")), "old, new");
  EXPECT_EQ(names(), (strings{"link", "notes"}));
}

TEST_F(OutputStreams, AHandleThatOnlyReadsIsAFaultAndItsFileStays) {
  test::write_file(folder.file("notes"), "old");
  const handle reading(open(folder.file("notes").c_str(), O_RDONLY));
  const std::string name = name_of_handle(reading.number());
  EXPECT_FALSE(write(name, "new"));
  EXPECT_EQ(manager.geterror(), name + ": cannot write: Bad file descriptor");
  EXPECT_EQ(test::read_file(folder.file("notes")), "old");
}

TEST_F(OutputStreams, APipeIsWrittenByItsHandle) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const handle out(ends[0]);
  const handle in(ends[1]);
  EXPECT_TRUE(write(name_of_handle(in.number()), "through"));
  EXPECT_EQ(out.read_some(), "through");
}

TEST_F(OutputStreams, ANamedPipeIsWrittenAndStays) {
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  const handle out(open(folder.file("pipe").c_str(), O_RDONLY | O_NONBLOCK));
  EXPECT_TRUE(write(folder.file("pipe"), "through"));
  EXPECT_EQ(out.read_some(), "through");
  EXPECT_TRUE(fs::is_fifo(folder.file("pipe")));
  EXPECT_EQ(names(), strings{"pipe"});
}

TEST_F(OutputStreams, SocketsAreWrittenByHandleAndByName) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const handle out(ends[0]);
  const handle in(ends[1]);
  EXPECT_TRUE(write(name_of_handle(in.number()), "by handle"));
  EXPECT_EQ(out.read_some(), "by handle");

  const std::string name = folder.file("s");
  const handle listening(socket(AF_UNIX, SOCK_STREAM, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  name.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listening.number(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  expect_no_writing(name, "Connection refused");
  ASSERT_EQ(listen(listening.number(), 1), 0);
  EXPECT_TRUE(write(name, "by name"));
  EXPECT_EQ(handle(accept(listening.number(), nullptr, nullptr)).read_some(), "by name");
  EXPECT_TRUE(fs::is_socket(name));
}

TEST_F(OutputStreams, OnlyWhatIsNoFileByItsOwnNameIsAStream) {
  test::write_file(folder.file("file"), "");
  ASSERT_EQ(mkfifo(folder.file("pipe").c_str(), 0600), 0);
  const handle open_file(open(folder.file("file").c_str(), O_RDONLY));
  for (const std::string& name : {name_of_handle(open_file.number()), folder.file("pipe"), std::string("/dev/null")}) {
    EXPECT_TRUE(UT_FILEMANAGER::is_stream(name.c_str())) << name;
    fs::remove(folder.file("link"));
    fs::create_symlink(name, folder.file("link"));
    EXPECT_TRUE(UT_FILEMANAGER::is_stream(folder.file("link").c_str())) << name;
  }
  for (const std::string& name : {folder.file("file"), folder.file("missing"), folder.name(), std::string()}) {
    EXPECT_FALSE(UT_FILEMANAGER::is_stream(name.c_str())) << name;
  }
  fs::remove(folder.file("link"));
  fs::create_symlink("file", folder.file("link"));
  EXPECT_FALSE(UT_FILEMANAGER::is_stream(folder.file("link").c_str()));
  EXPECT_FALSE(UT_FILEMANAGER::is_stream(("/proc/self/root" + folder.file("file")).c_str()));
}

}  // namespace
