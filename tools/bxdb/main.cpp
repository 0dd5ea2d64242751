// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// bxdb: makes, checks, shows, converts, searches and compares database files.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "commands.h"
#include "failure.h"
#include "qelmoext.h"
#include "text.h"

namespace {

int report(const char* what) {
  fmt::print(stderr, "bxdb: {}\n", bxdb::printable(what));
  return bxdb::failed;
}

int run(int argc, char** argv) {
  int status = bxdb::done;
  CLI::App tool(
      "Makes, checks, shows, converts, searches and compares block database files.\n"
      "Files may be packed with gzip or zstd; outputs are when their name ends in .gz or .zst.",
      "bxdb");
  tool.set_version_flag("--version", std::string("bxdb ") + qelmodb::version());
  tool.footer(
      "Exit status: 0 done; 1 the answer is \"none\", \"different\" or \"invalid\"; 2 bad use or failure.\n"
      "Example: bxdb info device.bxd.gz");
  tool.require_subcommand(1);
  bxdb::add_generate_command(tool, status);
  bxdb::add_info_command(tool, status);
  bxdb::add_check_command(tool, status);
  bxdb::add_print_command(tool, status);
  bxdb::add_convert_command(tool, status);
  bxdb::add_find_command(tool, status);
  bxdb::add_at_command(tool, status);
  bxdb::add_diff_command(tool, status);
  try {
    tool.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return tool.exit(e) == 0 ? bxdb::done : bxdb::failed;
  }
  return status;
}

int guarded_run(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const bxdb::failure& e) {
    return report(e.what());
  } catch (const std::bad_alloc&) {
    return report("not enough memory");
  } catch (const std::exception& e) {
    return report(e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int status = guarded_run(argc, argv);
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  if (flushed && std::ferror(stdout) == 0) return status;
  // A fault met before the last flush has left no reason behind.
  const std::string reason = errno != 0 ? std::string(": ") + std::strerror(errno) : std::string();
  return report(("standard output: cannot write" + reason).c_str());
}
