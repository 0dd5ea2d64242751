// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <sys/mman.h>

#include <cstdint>

#include "ut_osmemory.h"

namespace {

void* map(std::size_t size) noexcept {
  void* start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return start != MAP_FAILED ? start : nullptr;
}

}  // namespace

void* ut_fresh_memory(std::size_t size) noexcept {
  if (size < ut_huge_page) return map(size);
  // Only what begins where a huge page does can lie on one: map more, and cut off what stands over.
  if (size > SIZE_MAX - ut_huge_page) return nullptr;
  char* mapped = static_cast<char*>(map(size + ut_huge_page));
  if (mapped == nullptr) return nullptr;
  const std::size_t after = reinterpret_cast<std::uintptr_t>(mapped) % ut_huge_page;
  const std::size_t before = ut_huge_page - after;
  munmap(mapped, before);
  if (after != 0) munmap(mapped + before + size, after);
#ifdef MADV_HUGEPAGE
  madvise(mapped + before, size, MADV_HUGEPAGE);
#endif
  return mapped + before;
}

void ut_release_memory(void* start, std::size_t size) noexcept { munmap(start, size); }
