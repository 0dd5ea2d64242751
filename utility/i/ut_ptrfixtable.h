// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The pointer fix-up table of a file: which string an address written into the file stands for now.
//
// Addresses in a file are untrusted 64-bit keys. They are only looked up, never followed.
#pragma once

#include <cstdint>
#include <vector>

#include "ut_types.h"

class BX_API UT_PTRFIXTABLE {
 public:
  /// What an old address stands for.
  struct entry {
    std::uint64_t old_address;
    char* now;               ///< borrowed
    std::uint32_t next = 0;  ///< the table's: which entry was asked for after this one the last time
    bool settled = false;    ///< for the user of the table, who may note here that the string needs no more work
  };

  UT_PTRFIXTABLE();

  /// From now on the old address means this string; of several definitions of one address the last
  /// wins. The string is borrowed. O(1) on average, also for crafted addresses.
  void setnewaddr(std::uint64_t old_address, char* now);

  /// field holds an old address as it was read. Puts the string that it stands for into the field.
  /// An address without a string makes the field null, at once and for good, and the field is
  /// remembered for checkptrs; but 0, the reference of a missing name, is resolved by null.
  void fixreference(char** field);

  /// The entry of an old address; for one without a string null, and the field is remembered. For 0 there always is
  /// one, whose string is null unless it was defined. Valid until the next setnewaddr. O(1) on average, and no more
  /// than a comparison where names follow each other as they did before, as those of like instances do.
  entry* resolve(std::uint64_t old_address, char** field) {
    const std::uint32_t guess = entries_[last_].next;
    if (entries_[guess].old_address != old_address) return search(old_address, field);
    last_ = guess;
    return &entries_[guess];
  }

  /// The first field whose reference was not resolved, or null when all were. The address serves
  /// for comparison only: the field may be gone.
  char** checkptrs() const noexcept;

  /// Counts a remembered field as resolved.
  void forget(char** field) noexcept;

 private:
  std::uint32_t& place_of(std::uint64_t old_address) noexcept;
  entry* search(std::uint64_t old_address, char** field);
  void grow();

  std::vector<entry> entries_;         // in the order of their definition; the first is that of 0
  std::vector<std::uint32_t> places_;  // numbers of entries, by hash; 0 where there is none
  std::uint32_t last_ = 0;             // the entry asked for last
  std::uint64_t seed_;
  std::vector<char**> unresolved_;
};
