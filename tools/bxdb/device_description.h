// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The file beside a database that describes its device.
#pragma once

#include <string>

namespace bxdb {

/// The name of the device description that belongs to a database or grid file: the file's name with ".npd" in
/// place of ".bxd" or ".bxg" and the endings of packed files.
std::string description_beside(const std::string& file);

}  // namespace bxdb
