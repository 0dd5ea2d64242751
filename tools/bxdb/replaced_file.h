// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What an output may replace unasked.
#pragma once

#include <string>

namespace bxdb {

/// Throws failure when a regular file of this name holds anything but a database or grid file, packed or not. An empty
/// file holds nothing that could be lost.
void refuse_to_replace_stranger(const std::string& name);

}  // namespace bxdb
