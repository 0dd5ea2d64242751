// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What only Windows has: names in UTF-16, long paths, sharing, attributes, devices.
#include <windows.h>

#include "file_manager_fixture.h"

namespace {

using test::FileManager;
using strings = std::vector<std::string>;

std::string utf8_of(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

class WindowsFiles : public FileManager {
 protected:
  std::string below(const char8_t* name) const { return utf8_of(folder.path() / name); }

  std::string bytes_of(const std::string& name) {
    UT_PTRFILE file(UT_READ);
    if (manager.add_ofile(name.c_str(), UT_READ, &file, false) == nullptr) return manager.geterror();
    std::string bytes(100, ' ');
    bytes.resize(static_cast<std::size_t>(file.sread(bytes.data(), 100)));
    EXPECT_TRUE(manager.rm_ofile(&file));
    return bytes;
  }
};

TEST_F(WindowsFiles, HaveNamesInUtf8) {
  const std::string name = below(u8"Ger\u00e4t \u00fcber \u6f22\u5b57 \U0001F600.bxd");
  EXPECT_TRUE(write(name, "x"));
  EXPECT_EQ(bytes_of(name), "x");
  const auto entry = std::filesystem::directory_iterator(folder.path());
  EXPECT_EQ(entry->path().filename().wstring(), L"Ger\u00e4t \u00fcber \u6f22\u5b57 \U0001F600.bxd");
}

TEST_F(WindowsFiles, WithNamesThatAreNotUtf8CannotBeOpened) {
  const std::string name = folder.file("a") + "\xff";
  expect_no_reading(name, "");
  expect_no_writing(name, "");
}

TEST_F(WindowsFiles, CanHavePathsOfAThousandCharacters) {
  std::wstring deep = L"\\\\?\\" + folder.path().wstring();
  for (int i = 0; i < 5; ++i) {
    deep += L"\\" + std::wstring(200, L'd');
    ASSERT_NE(CreateDirectoryW(deep.c_str(), nullptr), 0) << GetLastError();
  }
  const std::string name = utf8_of(std::filesystem::path(deep.substr(4))) + "/file.bxd";
  EXPECT_TRUE(write(name, "old")) << manager.geterror();
  EXPECT_TRUE(write(name, "new")) << manager.geterror();
  EXPECT_EQ(bytes_of(name), "new");
  for (std::wstring path = deep; path.size() > folder.path().wstring().size() + 4; path.resize(path.rfind(L'\\'))) {
    DeleteFileW((path + L"\\file.bxd").c_str());
    EXPECT_NE(RemoveDirectoryW(path.c_str()), 0);
  }
}

TEST_F(WindowsFiles, AreBytesWithoutLineEndsOfTheSystem) {
  const std::string bytes =
      "a\nb\r\nc\x1a"
      "d";
  EXPECT_TRUE(write(folder.file("out"), bytes));
  EXPECT_EQ(test::read_file(folder.file("out")), bytes);
  EXPECT_EQ(bytes_of(folder.file("out")), bytes);
}

TEST_F(WindowsFiles, ThatAreOpenElsewhereStayWhatTheyAre) {
  const std::string name = folder.file("out");
  test::write_file(name, "old");
  const HANDLE other = CreateFileA(name.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(write(name, "new"));
  EXPECT_TRUE(test::starts_with(manager.geterror(), name + ": cannot replace: ")) << manager.geterror();
  CloseHandle(other);
  EXPECT_EQ(test::read_file(name), "old");
  EXPECT_EQ(names(), strings{"out"});
  EXPECT_TRUE(write(name, "new"));
  EXPECT_EQ(test::read_file(name), "new");
}

TEST_F(WindowsFiles, ThatAreReadOnlyAreNotReplaced) {
  const std::string name = folder.file("out");
  test::write_file(name, "old");
  ASSERT_NE(SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_READONLY), 0);
  expect_no_writing(name, "");
  EXPECT_NE(SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_NORMAL), 0);
  EXPECT_EQ(test::read_file(name), "old");
  EXPECT_EQ(names(), strings{"out"});
}

TEST_F(WindowsFiles, ThatAreHiddenStayHidden) {
  const std::string name = folder.file("out");
  for (const bool replace : {true, false}) {
    test::write_file(name, "old");
    ASSERT_NE(SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_HIDDEN), 0);
    EXPECT_TRUE(write(name, "new", replace)) << manager.geterror();
    EXPECT_NE(GetFileAttributesA(name.c_str()) & FILE_ATTRIBUTE_HIDDEN, 0U);
    EXPECT_NE(SetFileAttributesA(name.c_str(), FILE_ATTRIBUTE_NORMAL), 0);
    EXPECT_EQ(bytes_of(name), "new");
  }
}

TEST_F(WindowsFiles, CanBeDevices) { EXPECT_TRUE(write("NUL", "x")) << manager.geterror(); }

TEST_F(WindowsFiles, OfMoreThanFourGigabytesHaveTheirSize) {
  const std::string name = folder.file("large");
  const HANDLE made = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr);
  ASSERT_NE(made, INVALID_HANDLE_VALUE);
  LARGE_INTEGER end{};
  end.QuadPart = (LONGLONG{5} << 30) + 7;
  const bool sized = SetFilePointerEx(made, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(made) != 0;
  CloseHandle(made);
  ASSERT_TRUE(sized);
  UT_PTRFILE file(UT_READ);
  ASSERT_NE(manager.add_ofile(name.c_str(), UT_READ, &file, false), nullptr);
  EXPECT_EQ(file.bytesleft(), end.QuadPart);
  EXPECT_TRUE(manager.rm_ofile(&file));
}

}  // namespace
