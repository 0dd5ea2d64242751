// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "host.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace bxdb {
namespace {

// A place among the first three that is closed is taken by the next file that is opened, and what goes to standard
// output would be written into that. What is put there instead cannot be read or written either.
void fill_closed_places() noexcept {
  for (const int place : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(place, F_GETFD) == -1) ::open("/dev/null", place == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
}

std::optional<file_identity> identity_of(const struct stat& status) noexcept {
  if (S_ISCHR(status.st_mode)) return std::nullopt;
  return file_identity{static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino),
                       S_ISREG(status.st_mode)};
}

}  // namespace

std::vector<std::string> command_line_words(int argc, char** argv) {
  fill_closed_places();
  // A write beyond the limit for file sizes fails then like any other.
  std::signal(SIGXFSZ, SIG_IGN);
  return {argv, argv + argc};
}

std::optional<file_identity> identity_of(const std::string& name) {
  struct stat status {};
  return ::stat(name.c_str(), &status) == 0 ? identity_of(status) : std::nullopt;
}

std::optional<file_identity> identity_of(std::FILE* stream) {
  struct stat status {};
  return ::fstat(::fileno(stream), &status) == 0 ? identity_of(status) : std::nullopt;
}

std::filesystem::path path_of(const std::string& name) { return name; }

std::FILE* open_for_reading(const std::string& name) { return std::fopen(name.c_str(), "rb"); }

bool error_output_is_terminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }

std::uint64_t physical_memory() noexcept {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long page = ::sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page);
}

}  // namespace bxdb
