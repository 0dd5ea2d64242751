// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Functions that stand before those of the C library and of the sanitizers, for the shared libraries too. They are
// called before the address sanitizer is ready for code that it watches, so this is compiled without.
#include "failing_memory.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace {

bool watching = false;
std::atomic<long> made{0};
std::atomic<long> failed{0};
std::atomic<long> failed_pages{0};
std::atomic<long> first_failing{0};
std::atomic<long> end_of_failing{0};
std::atomic<long> blocks{0};  // of malloc that are not freed
long held = 0;                // bytes, while a watch lives; only one thread allocates then
long most_held = 0;

void note_bytes(long bytes) {
  if (!watching) return;
  held += bytes;
  most_held = std::max(most_held, held);
}

/// Counts an allocation, and tells whether it is to fail.
bool refused() {
  if (!watching) return false;
  const long number = made++;
  if (number < first_failing || number >= end_of_failing) return false;
  ++failed;
  return true;
}

template <class Function>
Function* next_function(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

#pragma GCC visibility push(default)

extern "C" {

void* mmap(void* start, std::size_t size, int protection, int flags, int handle, off_t offset) noexcept {
  static auto* const next = next_function<void*(void*, std::size_t, int, int, int, off_t)>("mmap");
  if (refused()) {
    ++failed_pages;
    errno = ENOMEM;
    return MAP_FAILED;
  }
  return next(start, size, protection, flags, handle, offset);
}

#ifdef QELMODB_SANITIZED

// The sanitizer's own, which its operator new does not use. Blocks are not counted: it looks for leaks itself.
void* __interceptor_malloc(std::size_t size);
void* __interceptor_calloc(std::size_t count, std::size_t size);
void* __interceptor_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept { return refused() ? nullptr : __interceptor_malloc(size); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return refused() ? nullptr : __interceptor_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
  return refused() ? nullptr : __interceptor_realloc(block, size);
}
}

void* operator new(std::size_t size) {
  static auto* const next = next_function<void*(std::size_t)>("_Znwm");
  if (refused()) throw std::bad_alloc();
  return next(size);
}
void* operator new[](std::size_t size) {
  static auto* const next = next_function<void*(std::size_t)>("_Znam");
  if (refused()) throw std::bad_alloc();
  return next(size);
}
void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept {
  static auto* const next = next_function<void*(std::size_t, const std::nothrow_t&)>("_ZnwmRKSt9nothrow_t");
  return refused() ? nullptr : next(size, tag);
}
void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept {
  static auto* const next = next_function<void*(std::size_t, const std::nothrow_t&)>("_ZnamRKSt9nothrow_t");
  return refused() ? nullptr : next(size, tag);
}

// Told of every block, be it of malloc or of operator new.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);

static const int hooked = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) { note_bytes(static_cast<long>(size)); },
    [](const volatile void* block) {
      if (block != nullptr) note_bytes(-static_cast<long>(__sanitizer_get_allocated_size(block)));
    });

#else

static long size_of(void* block) { return static_cast<long>(malloc_usable_size(block)); }

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void __libc_free(void* block);

static void* counted(void* block) {
  if (block != nullptr) blocks.fetch_add(1, std::memory_order_relaxed);
  note_bytes(size_of(block));
  return block;
}

void* malloc(std::size_t size) noexcept { return refused() ? nullptr : counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return refused() ? nullptr : counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) noexcept {
  if (refused()) return nullptr;
  if (block == nullptr) return counted(__libc_malloc(size));
  if (size == 0) blocks.fetch_sub(1, std::memory_order_relaxed);
  const long before = size_of(block);
  void* moved = __libc_realloc(block, size);
  if (moved != nullptr || size == 0) note_bytes(size_of(moved) - before);
  return moved;
}
void free(void* block) noexcept {
  if (block != nullptr) blocks.fetch_sub(1, std::memory_order_relaxed);
  note_bytes(-size_of(block));
  __libc_free(block);
}
}

#endif

#pragma GCC visibility pop

namespace test {

allocation_watch::allocation_watch(long first, long many) {
  ::made = 0;
  ::failed = 0;
  ::failed_pages = 0;
  held = most_held = 0;
  first_failing = first;
  end_of_failing = many < none - first ? first + many : none;
  watching = true;
}

allocation_watch::~allocation_watch() { watching = false; }

long allocation_watch::made() noexcept { return ::made; }
long allocation_watch::failed() noexcept { return ::failed; }
long allocation_watch::failed_pages() noexcept { return ::failed_pages; }
long allocation_watch::peak() noexcept { return most_held; }

std::ostream& operator<<(std::ostream& to, memory_end end) {
  return to << (end == memory_end::threw ? "std::bad_alloc" : end == memory_end::gave_true ? "true" : "false");
}

void memory_trials::finish(memory_end end) {
  struck_ = allocation_watch::failed() != 0;
  if (struck_) {
    ++failures_;
    page_failures_ += allocation_watch::failed_pages();
    ++failures_of_mode_;
  } else {
    EXPECT_EQ(end, memory_end::gave_true) << "with all the memory it wanted";
  }
}

bool memory_trials::next() {
  if (number_ >= 0) {
    expect_nothing_left();
    if (!ran_) ADD_FAILURE() << "nothing was tried";
    if (!struck_ || !ran_) {
      EXPECT_GE(failures_of_mode_, least_);
      failures_of_mode_ = 0;
      number_ = -1;
      mode_ = static_cast<mode>(mode_ + 1);
#ifdef QELMODB_SANITIZED
      if (mode_ == once_more) mode_ = done;
#endif
    }
  }
  ran_ = struck_ = false;
  blocks_ = blocks;
  constexpr long one_by_one = 300;
  number_ += number_ < one_by_one ? 1 : 7;
  return mode_ != done;
}

void memory_trials::expect_nothing_left() {
  if (mode_ != once) {
    EXPECT_EQ(blocks - blocks_, 0) << "blocks of memory are left behind";
  }
}

}  // namespace test
