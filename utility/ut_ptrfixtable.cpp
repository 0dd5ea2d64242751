// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "ut_ptrfixtable.h"

#include <algorithm>
#include <cstring>

#include "ut_hash.h"

UT_PTRFIXTABLE::UT_PTRFIXTABLE() : seed_(ut_hash_seed()) {}

std::size_t UT_PTRFIXTABLE::home(std::uint64_t key) const noexcept {
  return static_cast<std::size_t>(ut_hash(key, seed_)) & (slots_.size() - 1);
}

UT_PTRFIXTABLE::slot* UT_PTRFIXTABLE::find(std::uint64_t key) noexcept {
  std::size_t at = home(key);
  while (slots_[at].used && slots_[at].key != key) at = (at + 1) & (slots_.size() - 1);
  return &slots_[at];
}

void UT_PTRFIXTABLE::grow() {
  std::vector<slot> old(std::max<std::size_t>(64, slots_.size() * 2));
  old.swap(slots_);
  for (const slot& entry : old) {
    if (entry.used) *find(entry.key) = entry;
  }
}

void UT_PTRFIXTABLE::setnewaddr(std::uint64_t old_address, char* now) {
  if ((used_ + 1) * 2 > slots_.size()) grow();
  slot* place = find(old_address);
  if (!place->used) ++used_;
  *place = {old_address, now, true};
  if (old_address == last_key_) last_ = now;
}

char* UT_PTRFIXTABLE::resolve(std::uint64_t old_address, char** field) {
  // Neighbouring records often name the same string.
  if (last_ != nullptr && old_address == last_key_) return last_;
  const slot* place = slots_.empty() ? nullptr : find(old_address);
  if (place == nullptr || !place->used) {
    if (old_address != 0) unresolved_.push_back(field);
    return nullptr;
  }
  last_key_ = old_address;
  last_ = place->now;
  return last_;
}

void UT_PTRFIXTABLE::fixreference(char** field) {
  std::uint64_t old_address = 0;
  std::memcpy(&old_address, field, sizeof old_address);
  *field = nullptr;
  *field = resolve(old_address, field);
}

char** UT_PTRFIXTABLE::checkptrs() const noexcept { return unresolved_.empty() ? nullptr : unresolved_.front(); }

void UT_PTRFIXTABLE::forget(char** field) noexcept {
  unresolved_.erase(std::remove(unresolved_.begin(), unresolved_.end(), field), unresolved_.end());
}
