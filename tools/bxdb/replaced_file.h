// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What an output may replace unasked.
#pragma once

#include <string>

#include "qelmoext.h"

namespace bxdb {

/// Throws failure when a regular file of this name holds anything but what is going to be written, a database or a grid
/// file, packed or not. An empty file holds nothing that could be lost.
void refuse_to_replace_stranger(const std::string& name, qelmodb::content what);

}  // namespace bxdb
