// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>

namespace bxdb {

/// What an instance without wires, and a wire, take in a binary file.
inline constexpr std::int64_t binary_instance_size = 32;
inline constexpr std::int64_t binary_wire_size = 16;

}  // namespace bxdb
