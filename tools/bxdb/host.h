// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the tool asks of the operating system beyond the standard library.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace bxdb {

/// The words of the command line in UTF-8, the program's name first. To be called once, at the start: standard input
/// and output take bytes as they are from then on.
std::vector<std::string> command_line_words(int argc, char** argv);

/// A name in UTF-8 as the standard library takes it on this system.
std::filesystem::path path_of(const std::string& name);

/// Opens a file for reading its bytes; null and errno when it cannot be opened.
std::FILE* open_for_reading(const std::string& name);

/// Whether a person is likely to read standard error as it is written.
bool error_output_is_terminal() noexcept;

/// The memory of this machine in bytes; 0 when the system does not tell.
std::uint64_t physical_memory() noexcept;

}  // namespace bxdb
