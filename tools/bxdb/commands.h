// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The commands. Each add function declares one command with its options; when the user chose it, parsing
// the command line runs it, and it stores its exit status. A command throws failure when it cannot do its
// work.
#pragma once

namespace CLI {
class App;
}

namespace bxdb {

void add_generate_command(CLI::App& tool, int& status);
void add_info_command(CLI::App& tool, int& status);
void add_check_command(CLI::App& tool, int& status);
void add_print_command(CLI::App& tool, int& status);
void add_convert_command(CLI::App& tool, int& status);
void add_find_command(CLI::App& tool, int& status);
void add_at_command(CLI::App& tool, int& status);
void add_diff_command(CLI::App& tool, int& status);

}  // namespace bxdb
