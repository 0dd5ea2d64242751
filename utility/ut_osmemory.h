// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Large pieces of memory straight from the operating system. This header and its source are the only place that knows
// how a system hands them out.
#pragma once

#include <cstddef>

/// The size of a huge page, or what stands for one.
inline constexpr std::size_t ut_huge_page = std::size_t{2} << 20;

/// Zeroed memory, aligned to a page, that is not resident until it is touched. size is not 0, and from ut_huge_page on
/// a multiple of it; so large a piece lies on huge pages where the system has them. Null when there is no memory.
void* ut_fresh_memory(std::size_t size) noexcept;

/// Gives back a piece of this size.
void ut_release_memory(void* start, std::size_t size) noexcept;
