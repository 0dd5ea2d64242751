// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_pool.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

#include "ut_osmemory.h"
#include "ut_sanitizer.h"

// A piece is as large as a huge page and begins where one does, so that the address of an object tells its piece. This
// head stands at its beginning, and the objects behind it.
struct UT_POOL::piece {
  // Places that are not given back, those not taken among them while places are still taken from the piece.
  std::atomic<std::ptrdiff_t> held;
  std::size_t object_size;
  std::shared_ptr<void> needed;
};

namespace {

constexpr std::size_t piece_size = ut_huge_page;
constexpr std::size_t head_size = 64;

// A bit for each piece that an address can lie in, set while there is one. Of the eight megabytes only what is asked
// about is ever touched: a page of them answers for 64 gigabytes of addresses.
class piece_map {
 public:
  static constexpr std::uintptr_t addresses = std::uintptr_t{1} << 47;

  bool has(std::uintptr_t address) noexcept {
    return address < addresses && (word(address).load(std::memory_order_relaxed) & bit(address)) != 0;
  }
  void add(std::uintptr_t address) noexcept { word(address).fetch_or(bit(address), std::memory_order_relaxed); }
  void remove(std::uintptr_t address) noexcept { word(address).fetch_and(~bit(address), std::memory_order_relaxed); }

 private:
  static std::uint64_t bit(std::uintptr_t address) noexcept { return std::uint64_t{1} << (address / piece_size % 64); }
  std::atomic_ref<std::uint64_t> word(std::uintptr_t address) noexcept {
    return std::atomic_ref(words_[address / piece_size / 64]);
  }

  std::array<std::uint64_t, addresses / piece_size / 64> words_;
};

piece_map pieces;

}  // namespace

std::size_t UT_POOL::places_of_piece() const noexcept {
  return (piece_size - head_size) / (object_size_ + ut_red_zone);
}

void* UT_POOL::take() {
  if (piece_ == nullptr || taken_ == places_of_piece()) {
    close_piece();
    if (!open_piece()) return nullptr;
  }
  char* taken = place(taken_++);
  ut_allow(taken, object_size_);
  return taken;
}

char* UT_POOL::place(std::size_t number) const noexcept {
  return reinterpret_cast<char*>(piece_) + head_size + number * (object_size_ + ut_red_zone);
}

// A small load stays small: only its first piece is not on a huge page.
bool UT_POOL::open_piece() noexcept {
  void* start = ut_fresh_memory(piece_size);
  if (start == nullptr) return false;
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  if (address >= piece_map::addresses) {
    ut_release_memory(start, piece_size);
    return false;
  }
  if (is_large_) ut_use_huge_pages(start, piece_size);
  is_large_ = true;
  static_assert(sizeof(piece) <= head_size);
  piece_ = ::new (start) piece{static_cast<std::ptrdiff_t>(places_of_piece()), object_size_, needed_};
  taken_ = 0;
  ut_forbid(static_cast<char*>(start) + head_size, piece_size - head_size);
  pieces.add(address);
  return true;
}

void UT_POOL::release(piece* of) noexcept {
  const std::shared_ptr<void> needed = std::move(of->needed);
  of->~piece();
  pieces.remove(reinterpret_cast<std::uintptr_t>(of));
  ut_release_memory(of, piece_size);
}

void UT_POOL::close_piece() noexcept {
  if (piece_ == nullptr) return;
  const auto unused = static_cast<std::ptrdiff_t>(places_of_piece() - taken_);
  char* unused_places = place(taken_);
  ut_drop_unused(unused_places, static_cast<std::size_t>(reinterpret_cast<char*>(piece_) + piece_size - unused_places));
  if (piece_->held.fetch_sub(unused, std::memory_order_acq_rel) == unused) release(piece_);
  piece_ = nullptr;
}

bool UT_POOL::holds(const void* object) noexcept { return pieces.has(reinterpret_cast<std::uintptr_t>(object)); }

void UT_POOL::give_back(void* object) noexcept {
  char* start = static_cast<char*>(object) - reinterpret_cast<std::uintptr_t>(object) % piece_size;
  auto* of = reinterpret_cast<piece*>(start);
  ut_forbid(object, of->object_size);
  if (of->held.fetch_sub(1, std::memory_order_acq_rel) == 1) release(of);
}
