// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bench_device.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "device_generator.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

class scratch_folder {
 public:
  scratch_folder() : path_(fs::temp_directory_path() / ("qelmodb-bench-" + std::to_string(std::rand()))) {
    fs::create_directories(path_);
  }
  scratch_folder(const scratch_folder&) = delete;
  scratch_folder& operator=(const scratch_folder&) = delete;
  ~scratch_folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

std::string dumped(const char* name, bool ascii) {
  const std::string file = scratch_file(name);
  if (device().dump(file.c_str(), ascii) == 0) throw std::runtime_error(ut_file->geterror());
  return file;
}

}  // namespace

BX_DB& device() {
  static const std::unique_ptr<BX_DB> made = [] {
    bxdb::device_options options;
    options.columns = 200;
    options.rows = 200;
    options.wires = 100;
    return bxdb::generate_device(options);
  }();
  return *made;
}

const std::string& text_file() {
  static const std::string file = dumped("text.bxd", true);
  return file;
}

const std::string& binary_file() {
  static const std::string file = dumped("binary.bxd", false);
  return file;
}

std::string scratch_file(const char* name) {
  static const scratch_folder folder;
  return (folder.path() / name).string();
}

std::string read_whole(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

}  // namespace bench
