// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "builders.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "qelmocompress.h"
#include "test_host.h"

namespace test {

temporary_folder::temporary_folder() {
  std::random_device random;
  do {
    path_ = std::filesystem::temp_directory_path() / ("qelmodb-test-" + std::to_string(random()));
  } while (!std::filesystem::create_directory(path_));
}

temporary_folder::~temporary_folder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + name);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

void write_file(const std::string& name, const std::string& bytes) {
  std::ofstream file(name, std::ios::binary);
  file << bytes;
  if (!file.flush()) throw std::runtime_error("cannot write " + name);
}

caught_report::caught_report() {
  ut_msgman->setsink(
      [](const char* text, void* user) {
        auto* report = static_cast<caught_report*>(user);
        report->text_ += text;
        report->pieces_.emplace_back(text);
      },
      this);
}

caught_report::~caught_report() { ut_msgman->setsink(nullptr, nullptr); }

environment::environment(const char* name, const char* value) : name_(name) {
  if (const char* old = std::getenv(name)) old_ = old;
  set_variable(name, value);
}

environment::~environment() { set_variable(name_.c_str(), old_ ? old_->c_str() : nullptr); }

separator::separator(char c) {
  BX_DB any;
  old_ = any.getseparator();
  any.setseparator(c);
}

separator::~separator() {
  BX_DB any;
  any.setseparator(old_);
}

std::string text_of(const BX_INSTANCE& inst) {
  UT_MEMFILE file;
  inst.writeme(static_cast<UT_STREAM*>(&file));
  return file.bytes();
}

void grow_random_tree(BX_INSTANCE& root, std::mt19937& random, int instances) {
  const auto pick = [&random](int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); };
  const auto name = [&] {
    std::string text;
    for (int length = pick(1, 6); length > 0; --length) text += "ABab12_$/. "[pick(0, 10)];
    return text;
  };
  std::vector<BX_INSTANCE*> nodes{&root};
  for (int i = 0; i < instances; ++i) {
    const int x = pick(-20, 20);
    const int y = pick(-20, 20);
    auto* inst = new BX_INSTANCE(name().c_str(), x, y, x + pick(0, 9), y + pick(0, 9));
    for (int wires = pick(0, 5); wires > 0; --wires) {
      const BX_WIRE wire(name().c_str(), pick(-100, 100), pick(-100, 100));
      inst->addwire(&wire);
    }
    nodes[static_cast<std::size_t>(pick(0, static_cast<int>(nodes.size()) - 1))]->addinstance(inst);
    nodes.push_back(inst);
  }
}

void fill_and_compress_alike(BX_DB& tree, int instances, int wires) {
  auto* full = new BX_INSTANCE("T", 0, 0, 0, 1);
  const BX_WIRE wire("W", 0, 0);
  for (int k = 0; k < wires; ++k) full->addwire(&wire);
  tree.addinstance(full);
  qelmodb::intern_root_name(tree);
  tree.compress();
  for (int y = 1; y < instances; ++y) {
    auto* like = new BX_INSTANCE("T", 0, y, 0, y + 1);
    like->tmplt = full->tmplt;
    tree.addinstance(like);
  }
}

}  // namespace test
