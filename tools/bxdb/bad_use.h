// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What is said of a command line that cannot be understood.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "failure.h"

namespace bxdb {

/// Throws failure when there is no command of this name.
void require_command(const CLI::App& tool, const std::string& name);

/// Throws failure when there are more words than these; the first is a command.
void refuse_more_words(const std::vector<std::string>& words, std::size_t most);

/// A sentence that says what is wrong with the words that the tool was given and failed to parse, what they may have
/// been meant to be, and where help is.
failure bad_use(const CLI::App& tool, const CLI::ParseError& error, const std::vector<std::string>& words);

}  // namespace bxdb
