// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// bxdb: makes, checks, shows, converts, searches and compares database files.
#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "command_line.h"
#include "failure.h"
#include "host.h"
#include "text.h"

namespace {

int report(const char* what) {
  fmt::print(stderr, "bxdb: {}\n", bxdb::printable(what));
  return bxdb::failed;
}

int guarded_run(int argc, char** argv) {
  try {
    return bxdb::run_command_line(bxdb::command_line_words(argc, argv));
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
