// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the tool asks of the operating system beyond the standard library.
#pragma once

#include <cstdint>

namespace bxdb {

/// Whether a person is likely to read standard error as it is written.
bool error_output_is_terminal() noexcept;

/// The memory of this machine in bytes; 0 when the system does not tell.
std::uint64_t physical_memory() noexcept;

}  // namespace bxdb
