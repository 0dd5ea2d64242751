// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "loaded_database.h"

namespace bxdb {
namespace {

struct print_options {
  std::string file;
  input_options input;
  bool grid = false;
};

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

void run(const print_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const report_buffer buffer;
  if (options.grid || loaded.what == qelmodb::content::grid) {
    loaded.db->printgrid(0);
  } else {
    loaded.db->printme(0);
  }
}

}  // namespace

void add_print_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("print", "Prints the tree");
  const auto options = std::make_shared<print_options>();
  command.add_option("FILE", options->file, "The file")->required();
  command.add_flag("--grid", options->grid, "Print instances only, without wires, as is done for a grid file anyway");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb print --grid device.bxd | head");
  command.callback([options, &status] {
    run(*options);
    status = done;
  });
}

}  // namespace bxdb
