// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the user may say: commands, options, help.
#pragma once

#include <string>
#include <vector>

namespace bxdb {

/// Runs the command that the words ask for, of which the first is the name of the program, or shows help or version.
/// Gives the exit status of the program. Throws failure for bad use, and when the command does.
int run_command_line(const std::vector<std::string>& words);

}  // namespace bxdb
