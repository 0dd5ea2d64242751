// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the user may say: commands, options, help.
#pragma once

namespace bxdb {

/// Runs the command that the arguments ask for, or shows help or version. Gives the exit status of the
/// program; bad use is told on standard error. Throws failure when the command does.
int run_command_line(int argc, char** argv);

}  // namespace bxdb
