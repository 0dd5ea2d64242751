// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the names of inputs and outputs lead to: "-", and two names of one file.
#pragma once

#include <string>
#include <string_view>

namespace bxdb {

/// Whether the name is "-": standard input as the name of an input, standard output as that of an output.
bool is_standard_stream(std::string_view name) noexcept;

/// The names as messages show them.
std::string shown_input(const std::string& name);
std::string shown_output(const std::string& name);

/// Whether an input and an output are the same regular file, however their names are spelled. One socket may be both.
bool is_same_file(const std::string& input, const std::string& output);

/// The name of the file that a name leads to, which need not exist: links are followed. The name itself when it is no
/// link.
std::string link_target(const std::string& name);

/// Throws failure when the output is the input.
void refuse_input_as_output(const std::string& input, const std::string& output);

/// Throws failure when the output is the description of an input, beside its name or the file that this leads to.
void refuse_description_as_output(const std::string& input, const std::string& output);

/// Throws failure when both outputs, none of which need exist, lead to the same place.
void refuse_same_outputs(const std::string& a, const std::string& b);

/// Throws failure when two inputs are one stream, which can be read only once. The same regular file may be both.
void refuse_same_streams(const std::string& a, const std::string& b);

/// Throws failure when the output goes to standard output, where something else goes, too.
void refuse_standard_output(const std::string& output);

/// Throws failure when what is printed goes into the input, a regular file.
void refuse_printing_into(const std::string& input);

}  // namespace bxdb
