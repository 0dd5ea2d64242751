// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Storage for many arrays that come and go together. It is cut from a few large pieces of fresh memory, on huge pages
// where the system has them: touching memory for the first time is what loading spends most on, and giving it back in
// large pieces takes no time.
#pragma once

#include <cstddef>
#include <vector>

class UT_SLABS {
 public:
  UT_SLABS() noexcept = default;
  UT_SLABS(const UT_SLABS&) = delete;
  UT_SLABS& operator=(const UT_SLABS&) = delete;

  /// Gives all storage back.
  ~UT_SLABS();

  /// Zeroed storage for bytes bytes, aligned to 8. It cannot be given back by itself. Throws std::bad_alloc.
  void* take(std::size_t bytes);

  /// So many bytes will be taken: they come in one piece, where they do not fit into what is left.
  void expect(std::size_t bytes) noexcept;

  /// No more is taken for now: keeps nothing resident that was not taken.
  void trim() noexcept;

 private:
  struct piece {
    void* start;
    std::size_t size;
  };

  void add_piece(std::size_t least);

  std::vector<piece> pieces_;
  char* at_ = nullptr;
  std::size_t left_ = 0;
  std::size_t next_size_ = std::size_t{256} << 10;
};
