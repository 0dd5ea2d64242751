// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The device that the benchmarks work on: 200 x 200 tiles with 100 wires in each switch matrix, made once, and
// its files in a folder of their own.
#pragma once

#include <string>

#include "qelmodb.h"

namespace bench {

BX_DB& device();

/// The device as a file, written on first use and removed at the end.
const std::string& text_file();
const std::string& binary_file();

/// A file name in the same folder.
std::string scratch_file(const char* name);

std::string read_whole(const std::string& name);

}  // namespace bench
