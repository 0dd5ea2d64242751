// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the tool asks of the operating system beyond the standard library.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace bxdb {

/// The words of the command line in UTF-8, the program's name first. To be called once, at the start: standard input
/// and output take bytes as they are from then on, no file that is opened later gets the place of one that is closed,
/// and what goes beyond a limit for file sizes is a fault and ends no process.
std::vector<std::string> command_line_words(int argc, char** argv);

/// A name in UTF-8 as the standard library takes it on this system.
std::filesystem::path path_of(const std::string& name);

/// Opens a file for reading its bytes; null and errno when it cannot be opened.
std::FILE* open_for_reading(const std::string& name);

/// What names the same file whatever its path.
struct file_identity {
  std::uint64_t volume;
  std::uint64_t index;
  bool is_regular;  ///< and no pipe or socket

  bool operator==(const file_identity&) const = default;
};

/// The file that a name leads to, links followed, or that a stream of the program stands for. None when there is none,
/// or for a device, which any number of programs may share.
std::optional<file_identity> identity_of(const std::string& name);
std::optional<file_identity> identity_of(std::FILE* stream);

/// Whether a person is likely to read standard error as it is written.
bool error_output_is_terminal() noexcept;

/// The memory of this machine in bytes; 0 when the system does not tell.
std::uint64_t physical_memory() noexcept;

}  // namespace bxdb
