// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_ptrfixtable.h"

#include <algorithm>
#include <cstring>

#include "ut_hash.h"

UT_PTRFIXTABLE::UT_PTRFIXTABLE() : entries_{{0, nullptr}}, seed_(ut_hash_seed()) {}

// Where the number of the address's entry stands, or would stand.
std::uint32_t& UT_PTRFIXTABLE::place_of(std::uint64_t old_address) noexcept {
  const std::size_t mask = places_.size() - 1;
  std::size_t at = static_cast<std::size_t>(ut_hash(old_address, seed_)) & mask;
  while (places_[at] != 0 && entries_[places_[at]].old_address != old_address) at = (at + 1) & mask;
  return places_[at];
}

void UT_PTRFIXTABLE::grow() {
  places_.assign(std::max<std::size_t>(64, places_.size() * 2), 0);
  for (std::uint32_t i = 1; i < entries_.size(); ++i) place_of(entries_[i].old_address) = i;
}

void UT_PTRFIXTABLE::setnewaddr(std::uint64_t old_address, char* now) {
  if (entries_.size() * 2 > places_.size()) grow();
  std::uint32_t number = 0;
  if (old_address != 0) {
    std::uint32_t& place = place_of(old_address);
    if (place == 0) {
      entries_.push_back({old_address, now});
      place = static_cast<std::uint32_t>(entries_.size() - 1);
    }
    number = place;
  }
  entries_[number].now = now;
  entries_[number].settled = false;
}

UT_PTRFIXTABLE::entry* UT_PTRFIXTABLE::search(std::uint64_t old_address, char** field) {
  const std::uint32_t number = old_address == 0 || places_.empty() ? 0 : place_of(old_address);
  if (number == 0 && old_address != 0) {
    unresolved_.push_back(field);
    return nullptr;
  }
  entries_[last_].next = number;
  last_ = number;
  return &entries_[number];
}

void UT_PTRFIXTABLE::fixreference(char** field) {
  std::uint64_t old_address = 0;
  std::memcpy(&old_address, field, sizeof old_address);
  *field = nullptr;
  const entry* known = resolve(old_address, field);
  if (known != nullptr) *field = known->now;
}

char** UT_PTRFIXTABLE::checkptrs() const noexcept { return unresolved_.empty() ? nullptr : unresolved_.front(); }

void UT_PTRFIXTABLE::forget(char** field) noexcept {
  unresolved_.erase(std::remove(unresolved_.begin(), unresolved_.end(), field), unresolved_.end());
}
