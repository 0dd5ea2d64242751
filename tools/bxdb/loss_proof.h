// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Whether a compressed file gives back what was announced, found by comparing the trees and nothing else.
#pragma once

#include "qelmocompress.h"

namespace bxdb {

/// Whether the tree that came back has the instances and rectangles of the original, and of each kind of loss as many
/// cases as the losses count.
bool comes_back_as_announced(const BX_DB& original, const BX_DB& back, const qelmodb::compression_losses& losses);

}  // namespace bxdb
