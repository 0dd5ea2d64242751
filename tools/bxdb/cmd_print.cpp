// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <cstring>

#include "commands.h"
#include "failure.h"
#include "loaded_database.h"

namespace bxdb {
namespace {

/// Collects the many small pieces of a report while the object lives, and writes them in large blocks.
class report_buffer {
 public:
  report_buffer() {
    text_.reserve(block + slack);
    ut_msgman->setsink(
        [](const char* text, void* user) { static_cast<report_buffer*>(user)->add(text, std::strlen(text)); }, this);
  }
  report_buffer(const report_buffer&) = delete;
  report_buffer& operator=(const report_buffer&) = delete;
  ~report_buffer() {
    ut_msgman->setsink(nullptr, nullptr);
    write();
  }

 private:
  static constexpr std::size_t block = std::size_t{1} << 20;
  static constexpr std::size_t slack = 4096;

  void add(const char* text, std::size_t length) {
    text_.append(text, length);
    if (text_.size() >= block) write();
  }

  void write() noexcept {
    std::fwrite(text_.data(), 1, text_.size(), stdout);
    text_.clear();
  }

  std::string text_;
};

}  // namespace

int run_print(const print_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const report_buffer buffer;
  if (options.grid || loaded.what == qelmodb::content::grid) {
    loaded.db->printgrid(0);
  } else {
    loaded.db->printme(0);
  }
  return done;
}

}  // namespace bxdb
