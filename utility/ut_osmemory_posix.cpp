// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <sys/mman.h>

#include <cstdint>

#include "ut_osmemory.h"
#include "ut_sanitizer.h"

namespace {

char* map(std::size_t size) noexcept {
  void* start = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return start != MAP_FAILED ? static_cast<char*>(start) : nullptr;
}

// A mapping can begin at any page: more is mapped, and what stands over is cut off.
char* map_aligned(std::size_t size) noexcept {
  if (size > SIZE_MAX - ut_huge_page) return nullptr;
  char* mapped = map(size + ut_huge_page);
  if (mapped == nullptr) return nullptr;
  const std::size_t after = reinterpret_cast<std::uintptr_t>(mapped) % ut_huge_page;
  const std::size_t before = ut_huge_page - after;
  munmap(mapped, before);
  if (after != 0) munmap(mapped + before + size, after);
  return mapped + before;
}

}  // namespace

void* ut_fresh_memory(std::size_t size) noexcept {
  char* start = size < ut_huge_page ? map(size) : map_aligned(size);
  if (start != nullptr) ut_note_pointers(start, size);
  return start;
}

void ut_use_huge_pages(void* start, std::size_t size) noexcept {
#ifdef MADV_HUGEPAGE
  madvise(start, size, MADV_HUGEPAGE);
#else
  static_cast<void>(start);
  static_cast<void>(size);
#endif
}

void ut_drop_unused(void* start, std::size_t size) noexcept {
  constexpr std::size_t page = 4096;  // a system whose pages are larger may refuse, and keeps a little more
  const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(start) % page) % page;
  if (size > before) madvise(static_cast<char*>(start) + before, size - before, MADV_DONTNEED);
}

void ut_release_memory(void* start, std::size_t size) noexcept {
  ut_allow(start, size);
  ut_forget_pointers(start, size);
  munmap(start, size);
}
