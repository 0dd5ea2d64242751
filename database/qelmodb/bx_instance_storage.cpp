// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Where instances come from, and where they go: a load has its own places for them.
#include <new>

#include "bx_instance.h"
#include "ut_pool.h"

void* BX_INSTANCE::operator new(std::size_t size) { return ::operator new(size); }

void* BX_INSTANCE::operator new(std::size_t size, std::align_val_t alignment) {
  return ::operator new(size, alignment);
}

void* BX_INSTANCE::operator new(std::size_t size, const std::nothrow_t& tag) noexcept {
  return ::operator new(size, tag);
}

void* BX_INSTANCE::operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept {
  return ::operator new(size, alignment, tag);
}

void BX_INSTANCE::operator delete(void* inst) noexcept {
  if (UT_POOL::holds(inst)) {
    UT_POOL::give_back(inst);
  } else {
    ::operator delete(inst);
  }
}

void BX_INSTANCE::operator delete(void* inst, std::align_val_t alignment) noexcept {
  ::operator delete(inst, alignment);
}

void BX_INSTANCE::operator delete(void* inst, const std::nothrow_t& /*tag*/) noexcept { operator delete(inst); }

void BX_INSTANCE::operator delete(void* inst, std::align_val_t alignment, const std::nothrow_t& /*tag*/) noexcept {
  operator delete(inst, alignment);
}
