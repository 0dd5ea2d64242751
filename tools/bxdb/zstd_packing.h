// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files packed with zstd; the only place that knows the library. A build without it throws failure from both.
#pragma once

#include <memory>
#include <string_view>

#include "growing_text.h"
#include "packer.h"

namespace bxdb {

/// Unpacks all frames, or as much as the text takes.
void unpack_zstd(std::string_view packed, growing_text& text);

std::unique_ptr<packer> make_zstd_packer();

}  // namespace bxdb
