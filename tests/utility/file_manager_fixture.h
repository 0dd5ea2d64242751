// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A file manager and a folder for its files.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "builders.h"
#include "test_host.h"
#include "ut_filemanager.h"

namespace test {

namespace fs = std::filesystem;

inline bool starts_with(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

class FileManager : public testing::Test {
 protected:
  temporary_folder folder;
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
    EXPECT_TRUE(is_fault(manager.geterror(), name + ": cannot open for reading: ", why));
    EXPECT_EQ(manager.getcount(), 0);
  }

  void expect_no_writing(const std::string& name, const std::string& why) {
    for (const bool replace : {true, false}) {
      UT_PTRFILE file(UT_WRITE);
      EXPECT_EQ(manager.add_ofile(name.c_str(), UT_WRITE, &file, replace), nullptr) << name;
      EXPECT_TRUE(is_fault(manager.geterror(), name + ": cannot open for writing: ", why));
      EXPECT_EQ(manager.getcount(), 0);
    }
  }
};

}  // namespace test
