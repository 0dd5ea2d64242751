// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files packed with zstd; the only place that knows the library. A build without it throws failure from both.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "packer.h"

namespace bxdb {

/// As unpack.
std::string unpack_zstd(std::string_view packed, const std::string& name, std::uint64_t limit);

std::unique_ptr<packer> make_zstd_packer();

}  // namespace bxdb
