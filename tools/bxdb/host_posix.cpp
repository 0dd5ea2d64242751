// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "host.h"

#include <unistd.h>

namespace bxdb {

std::vector<std::string> command_line_words(int argc, char** argv) { return {argv, argv + argc}; }

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
