// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Runs the program in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "builders.h"

namespace test {

/// What a run of the program gave.
struct outcome {
  int status = -1;  ///< the exit status; -1 when a signal ended the program
  std::string out;
  std::string err;
};

using words = std::vector<std::string>;

/// The number of lines of a text, and whether it holds another.
std::size_t lines_of(const std::string& text);
bool holds(const std::string& text, const std::string& part);

/// A fixture with a folder for the files of the test.
class ToolTest : public ::testing::Test {
 protected:
  std::string file(const std::string& name) const { return folder_.file(name); }

  /// Writes a file and returns its full name.
  std::string made(const std::string& name, const std::string& bytes) const;

  /// Runs the program with these arguments.
  outcome run(const words& arguments) const;

  /// Runs it with this file as its standard input, which is empty otherwise.
  outcome run(const words& arguments, const std::string& input_file) const;

  /// Runs it and expects the status; tells all it printed when it is another.
  outcome expect(int status, const words& arguments) const;

  /// Runs it with --json behind the arguments, and parses what it prints.
  nlohmann::json json_of(int status, words arguments) const;

  temporary_folder folder_;
};

/// A database of text form: the root "chip", its children "LEFT" (with a BASIC_ASS) and "RIGHT", eight wires.
std::string small_text();

/// The same with one piece of text replaced; the piece occurs once.
std::string replaced(std::string text, const std::string& old, const std::string& now);

}  // namespace test
