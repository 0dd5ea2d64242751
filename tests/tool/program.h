// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Runs programs, on each system in its own way.
#pragma once

#include <string>
#include <vector>

namespace test {

struct program_files {
  std::string input;
  std::string output;
  std::string error;
};

/// The file that has nothing to read.
extern const char* const no_input;

/// Runs a program, the first of the words, and waits for its end. False when it cannot be started; status is then as it
/// was, and also when a signal ended the program.
bool start_program(const std::vector<std::string>& words, const program_files& files, int& status);

/// A loop that starts a program for each of many places goes this many times as far where programs take long to start.
#ifdef _WIN32
inline constexpr std::size_t start_stride = 5;
#else
inline constexpr std::size_t start_stride = 1;
#endif

}  // namespace test
