// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the user may write as the value of an option, and what is said of anything else. A value is never read as
// another one than is written.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bxdb {

/// Each gives what is wrong with a value, as the end of a sentence that begins with the option's name; nothing when it
/// is right, which then is written so that any reader of decimal numbers takes it.
std::string take_whole_number(std::string& text, std::int64_t least, std::uint64_t most);

/// Sizes are numbers of bytes, or numbers with or without a decimal fraction before a unit: K, M, G, T, P or E, in
/// either case, with or without B or iB behind it, powers of 1024 in any case.
std::string take_size(std::string& text);

std::string take_choice(const std::string& text, const std::vector<std::string>& choices);

/// "; did you mean ...?" when one of the words is nearly the one that was written, or begins like it; else nothing.
std::string suggestion(const std::string& written, const std::vector<std::string>& words);

}  // namespace bxdb
