// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The dynamic array of the library: contiguous elements that are moved as plain bytes, with sorted
// insertion and binary search under a three-way comparator.
//
// An array owns its storage and nothing that its elements point to; elements are never destroyed one
// by one. Assignment shares the storage (see operator=). Reading an array that nobody changes may run
// concurrently.
#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>

#include "ut_types.h"

/// What an array does to make an element: all bytes zero. A type whose empty value differs, or that
/// wants to know that it lies in an array, specialises this.
template <class T>
struct UT_ELEMENT {
  static void make(T* first, std::size_t count) noexcept {
    if (count != 0) std::memset(static_cast<void*>(first), 0, count * sizeof(T));
  }
  static void stored(T*) noexcept {}
};

/// The part of a dynamic array that does not depend on its element type.
class BX_API UT_BASE_ARRAY {
 public:
  /// Number of elements.
  bx_long getcount() const noexcept { return count_; }

  /// Drops all elements and the storage. What the elements point to is left alone.
  void empty() noexcept;

 protected:
  /// step is the growth step in elements (at least 1 is used); nothing is allocated yet.
  explicit UT_BASE_ARRAY(bx_long step) noexcept : step_(step > 0 ? step : 1) {}

  /// Forbidden: ends the process through ut_msgman with "Copy constructor not allowed". Should a
  /// substitute manager return, the new array is empty.
  UT_BASE_ARRAY(const UT_BASE_ARRAY& other);

  UT_BASE_ARRAY& operator=(const UT_BASE_ARRAY& other) noexcept = default;
  ~UT_BASE_ARRAY() { empty(); }

  /// Makes room for count elements of size bytes, exactly (a size known beforehand) or with the
  /// headroom that keeps repeated growth linear. Throws std::bad_alloc.
  void reserve_exactly(bx_long count, std::size_t size);
  void grow_for(bx_long count, std::size_t size);

  /// Moves out of storage that is not the array's own.
  void own(std::size_t size);
  bool owns_storage() const noexcept { return step_ > 0; }
  void swap_with(UT_BASE_ARRAY& other) noexcept;

  void* data_ = nullptr;
  bx_long count_ = 0;
  bx_long capacity_ = 0;
  bx_long step_;  // negative while the storage is not the array's own
};

/// A dynamic array of T. T must survive being moved as bytes.
template <class T>
class UT_DARRAY : public UT_BASE_ARRAY {
 public:
  /// An empty array that first grows to step elements and later by at least that.
  explicit UT_DARRAY(bx_long step = 16) noexcept : UT_BASE_ARRAY(step) {}

  /// Ends the process, see UT_BASE_ARRAY.
  UT_DARRAY(const UT_DARRAY& other) : UT_BASE_ARRAY(other) {}

  /// Shallow: afterwards both arrays share one storage, and only one of them may be changed or
  /// destroyed. The former storage of this array is not released; call empty() first.
  UT_DARRAY& operator=(const UT_DARRAY& other) noexcept = default;

  ~UT_DARRAY() = default;

  /// Element i, 0 <= i < getcount(); not checked.
  T& operator[](bx_long i) const noexcept { return elements()[i]; }

  T* begin() const noexcept { return elements(); }
  T* end() const noexcept { return elements() + count_; }

  /// The address of element i after making sure that elements 0 to i exist: a shorter array grows
  /// to exactly i + 1 elements (new ones are null or default), a longer one stays. Null for a
  /// negative i. Throws std::bad_alloc. Addresses taken earlier become invalid when it grows.
  T* getaddr(bx_long i) {
    if (i < 0) return nullptr;
    if (i >= count_) {
      if (i == INT32_MAX) i = INT32_MAX - 1;
      if (i >= capacity_) reserve_exactly(i + 1, sizeof(T));
      UT_ELEMENT<T>::make(elements() + count_, static_cast<std::size_t>(i + 1 - count_));
      count_ = i + 1;
    }
    return elements() + i;
  }

  /// Drops the last element, when there is one, and keeps the storage.
  void a_droplast() noexcept { count_ -= count_ > 0 ? 1 : 0; }

  /// Makes storage for count elements without adding any, so that adding them moves nothing. Throws
  /// std::bad_alloc.
  void a_reserve(bx_long count) { reserve_exactly(count, sizeof(T)); }

  /// Makes room for one more element: the next one that is added finds storage. Throws std::bad_alloc.
  void a_makeroom() {
    if (count_ == capacity_) grow_for(count_ + 1, sizeof(T));
  }

  /// Exchanges the elements, and the storage they lie in.
  void a_swap(UT_DARRAY& other) noexcept { swap_with(other); }

  /// The same as a_reserve in storage for count elements that somebody else owns and keeps for as long as the array
  /// does not grow beyond it, is not emptied and not destroyed. Nothing happens to an array that has storage. See
  /// a_own.
  void a_borrow(void* storage, bx_long count) noexcept {
    if (data_ != nullptr) return;
    data_ = storage;
    capacity_ = count;
    step_ = -step_;
  }

  /// Moves the elements out of borrowed storage. Throws std::bad_alloc.
  void a_own() { own(sizeof(T)); }

  /// Appends a byte copy of the element and returns its index.
  bx_long a_add(const T* element) { return insert(count_, element); }

  /// Inserts a byte copy of the element at its place and returns its index. compare(new, existing)
  /// is negative when the new element goes left. An element that compares equal to others goes
  /// behind them. compare takes two const T* or two const T&. O(log n) comparisons.
  template <class Compare>
  bx_long a_sortadd(const T* element, Compare compare) {
    bx_long lo = 0;
    bx_long hi = count_;
    while (lo < hi) {
      const bx_long mid = lo + (hi - lo) / 2;
      if (three_way(compare, element, elements() + mid) < 0) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
    return insert(lo, element);
  }

  /// The index of the first of the adjacent elements for which compare(key, element) is 0, or -1.
  /// compare takes the key as given and a const T* (or const T&); it is negative when the key sorts
  /// before the element. O(log n) comparisons plus one for each equal element stepped over. ahead(lo, hi) is told
  /// before each step which elements are left, first and last, so that it may have them fetched from memory.
  template <class Key, class Compare, class Ahead>
  bx_long a_bsearch(const Key& key, Compare compare, Ahead ahead) const {
    bx_long lo = 0;
    bx_long hi = count_ - 1;
    while (lo <= hi) {
      ahead(lo, hi);
      bx_long mid = lo + (hi - lo) / 2;
      const auto order = key_against(compare, key, elements() + mid);
      if (order == 0) {
        while (mid > 0 && key_against(compare, key, elements() + mid - 1) == 0) --mid;
        return mid;
      }
      if (order < 0) {
        hi = mid - 1;
      } else {
        lo = mid + 1;
      }
    }
    return -1;
  }

  /// The same without ahead.
  template <class Key, class Compare>
  bx_long a_bsearch(const Key& key, Compare compare) const {
    return a_bsearch(key, compare, [](bx_long, bx_long) noexcept {});
  }

  /// The index of the element at this address, or -1 when the address is not one of an element.
  bx_long intgetindex(const T* element) const noexcept {
    const std::less<const T*> before;
    if (element == nullptr || before(element, begin()) || !before(element, end())) return -1;
    const auto offset = reinterpret_cast<const char*>(element) - reinterpret_cast<const char*>(begin());
    if (static_cast<std::size_t>(offset) % sizeof(T) != 0) return -1;
    return static_cast<bx_long>(static_cast<std::size_t>(offset) / sizeof(T));
  }

 private:
  T* elements() const noexcept { return static_cast<T*>(data_); }

  template <class Compare>
  static auto three_way(Compare& compare, const T* a, const T* b) {
    if constexpr (std::is_invocable_v<Compare&, const T*, const T*>) {
      return compare(a, b);
    } else {
      return compare(*a, *b);
    }
  }

  template <class Key, class Compare>
  static auto key_against(Compare& compare, const Key& key, const T* element) {
    if constexpr (std::is_invocable_v<Compare&, const Key&, const T*>) {
      return compare(key, element);
    } else {
      return compare(key, *element);
    }
  }

  bx_long insert(bx_long at, const T* element) {
    // The element may lie in this array, whose storage is about to move: copy its bytes first.
    alignas(T) unsigned char copy[sizeof(T)];
    std::memcpy(copy, static_cast<const void*>(element), sizeof(T));
    a_makeroom();
    T* place = elements() + at;
    if (at < count_) {
      std::memmove(static_cast<void*>(place + 1), static_cast<const void*>(place),
                   static_cast<std::size_t>(count_ - at) * sizeof(T));
    }
    std::memcpy(static_cast<void*>(place), copy, sizeof(T));
    UT_ELEMENT<T>::stored(place);
    ++count_;
    return at;
  }
};
