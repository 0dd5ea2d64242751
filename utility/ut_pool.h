// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Storage for many objects of one size that are made together, one after the other, and are given back one by one, in
// any order and long after the pool. Places that were given back are not used again: a piece is freed with its last
// object.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>

class UT_POOL {
 public:
  /// For objects of this size, a multiple of 8, and of no more than ten thousand bytes. What they need lives as long as
  /// any of them.
  explicit UT_POOL(std::size_t object_size, std::shared_ptr<void> needed = nullptr) noexcept
      : object_size_(object_size), needed_(std::move(needed)) {}
  UT_POOL(const UT_POOL&) = delete;
  UT_POOL& operator=(const UT_POOL&) = delete;

  /// What was taken stays.
  ~UT_POOL() { close_piece(); }

  /// A place for an object, aligned to 8. Null when no place can be had: the object is made elsewhere then.
  void* take();

  /// Whether an object lies in a place of any pool. Any pointer can be asked about, from any thread.
  static bool holds(const void* object) noexcept;

  /// Gives back a place that holds() knows. From any thread.
  static void give_back(void* object) noexcept;

 private:
  struct piece;

  std::size_t places_of_piece() const noexcept;
  char* place(std::size_t number) const noexcept;
  bool open_piece() noexcept;
  void close_piece() noexcept;
  static void release(piece* of) noexcept;

  std::size_t object_size_;
  std::shared_ptr<void> needed_;
  piece* piece_ = nullptr;  // the one that places are taken from
  std::size_t taken_ = 0;   // of its places
  bool is_large_ = false;   // pieces were filled
};
