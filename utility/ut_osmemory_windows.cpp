// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <windows.h>

#include <cstdint>

#include "ut_osmemory.h"

// Addresses are reserved for more than what is asked for, and memory is committed only where a huge page would begin:
// an address costs nothing, and the system does not take back the ends of a reservation.
void* ut_fresh_memory(std::size_t size) noexcept {
  if (size < ut_huge_page) return VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  if (size > SIZE_MAX - ut_huge_page) return nullptr;
  void* reserved = VirtualAlloc(nullptr, size + ut_huge_page, MEM_RESERVE, PAGE_READWRITE);
  if (reserved == nullptr) return nullptr;
  const std::uintptr_t over = reinterpret_cast<std::uintptr_t>(reserved) % ut_huge_page;
  void* start = static_cast<char*>(reserved) + (over == 0 ? 0 : ut_huge_page - over);
  if (VirtualAlloc(start, size, MEM_COMMIT, PAGE_READWRITE) != nullptr) return start;
  VirtualFree(reserved, 0, MEM_RELEASE);
  return nullptr;
}

// Large pages need a privilege here that ordinary users do not have.
void ut_use_huge_pages(void*, std::size_t) noexcept {}

// So what was not touched is not resident.
void ut_drop_unused(void*, std::size_t) noexcept {}

void ut_release_memory(void* start, std::size_t) noexcept {
  MEMORY_BASIC_INFORMATION piece{};
  if (VirtualQuery(start, &piece, sizeof piece) != 0) VirtualFree(piece.AllocationBase, 0, MEM_RELEASE);
}
