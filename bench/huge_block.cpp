// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "huge_block.h"

#include <sys/mman.h>

#include <memory>
#include <new>

namespace bench {

namespace {

constexpr std::size_t huge_page = std::size_t{2} << 20;

}  // namespace

huge_block::huge_block(std::size_t bytes) : mapped_bytes_((bytes / huge_page + 2) * huge_page) {
  mapped_ = mmap(nullptr, mapped_bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (mapped_ == MAP_FAILED) throw std::bad_alloc();
  data_ = mapped_;
  std::size_t room = mapped_bytes_;
  std::align(huge_page, bytes, data_, room);
  madvise(data_, room / huge_page * huge_page, MADV_HUGEPAGE);
}

huge_block::~huge_block() { munmap(mapped_, mapped_bytes_); }

}  // namespace bench
