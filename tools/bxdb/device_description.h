// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The file beside a database that describes its device.
#pragma once

#include <string>

#include "np_device.h"

namespace bxdb {

/// The name of the device description that belongs to a database or grid file: the file's name with ".npd" in
/// place of ".bxd" or ".bxg" and the endings of packed files.
std::string description_beside(const std::string& file);

/// The description of an input: beside its name or else beside the file that the name leads to. Only a regular file is
/// one, as reading anything else may take forever. Empty when there is none.
std::string description_found(const std::string& input);

/// The place for the description of an output: beside the file that its name leads to.
std::string description_place(const std::string& output);

/// Whether a description belongs beside an output that was written: a regular file, by whatever link. A stream has
/// none, and a link may be one's standard output.
bool is_described(const std::string& output);

/// The same of an output that is going to be written, which may not be there yet.
bool will_be_described(const std::string& output);

/// What stands at the place of a description.
enum class in_place { nothing, the_same, another_device, no_description };

/// Looks at the place where this device's description is to stand. Why tells what is wrong with a file that is no
/// description.
in_place what_stands_at(const std::string& name, const NP_TABLEDEVICE& device, std::string& why);

/// Throws failure when there is a stream at the place of a description. A pipe would wait for a reader.
void refuse_stream(const std::string& name);

/// Throws failure when the description would replace anything else.
void refuse_to_replace(const std::string& name, const NP_TABLEDEVICE& device);

/// Puts a copy of the description beside one file, if there is one, beside another, a regular one, and says so. Never
/// replaces another file, but tells of it. Throws failure when the copy cannot be written.
void take_description_along(const std::string& from, const std::string& to);

}  // namespace bxdb
