// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// bxdb: makes, checks, shows, converts, searches and compares database files.
#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>
#include <system_error>

#include "command_line.h"
#include "failure.h"
#include "host.h"
#include "text.h"

namespace {

int report(const char* what) {
  fmt::print(stderr, "bxdb: {}\n", bxdb::printable(what));
  return bxdb::failed;
}

/// Output_error gets the reason when standard output did not take what was printed; nothing is said of it then.
int guarded_run(int argc, char** argv, int& output_error) {
  try {
    return bxdb::run_command_line(bxdb::command_line_words(argc, argv));
  } catch (const bxdb::failure& e) {
    return report(e.what());
  } catch (const std::bad_alloc&) {
    return report("not enough memory");
  } catch (const std::system_error& e) {
    if (std::ferror(stdout) == 0) return report(e.what());
    output_error = e.code().value();
    return bxdb::failed;
  } catch (const std::exception& e) {
    return report(e.what());
  }
}

}  // namespace

int main(int argc, char** argv) {
  int error = 0;
  const int status = guarded_run(argc, argv, error);
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  if (flushed && std::ferror(stdout) == 0) return status;
  if (error == 0) error = errno;
  // The library's reports drop the reason of a fault that is met before the last flush.
  const std::string reason = error != 0 ? std::string(": ") + std::strerror(error) : std::string();
  return report(("standard output: cannot write" + reason).c_str());
}
