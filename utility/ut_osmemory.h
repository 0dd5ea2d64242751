// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Large pieces of memory straight from the operating system. This header and its sources, one for each
// system, are the only place that knows how they are handed out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

/// The size of a huge page, or what stands for one.
inline constexpr std::size_t ut_huge_page = std::size_t{2} << 20;

/// The least multiple of unit that is not below bytes. Throws std::bad_alloc when there is none.
inline std::size_t ut_round_up(std::size_t bytes, std::size_t unit) {
  if (bytes > SIZE_MAX - unit) throw std::bad_alloc();
  return (bytes + unit - 1) / unit * unit;
}

/// Zeroed memory, aligned to a page, that is not resident until it is touched. size is not 0, and from ut_huge_page on
/// a multiple of it; so large a piece begins where a huge page does. Null when there is no memory.
void* ut_fresh_memory(std::size_t size) noexcept;

/// Has a piece lie on huge pages where the system has them: resident in steps of a huge page then, and quickly so.
void ut_use_huge_pages(void* start, std::size_t size) noexcept;

/// Keeps the end of a piece, which was not written to, from being resident because it shares a huge page with what was.
void ut_drop_unused(void* start, std::size_t size) noexcept;

/// Gives back a piece of this size.
void ut_release_memory(void* start, std::size_t size) noexcept;
