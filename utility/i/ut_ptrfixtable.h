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
  UT_PTRFIXTABLE();

  /// From now on the old address means this string; of several definitions of one address the last
  /// wins. The string is borrowed. O(1) on average, also for crafted addresses.
  void setnewaddr(std::uint64_t old_address, char* now);

  /// field holds an old address as it was read. Puts the string that it stands for into the field.
  /// An address without a string makes the field null, at once and for good, and the field is
  /// remembered for checkptrs; but 0, the reference of a missing name, is resolved by null.
  void fixreference(char** field);

  /// The same for an address that was read elsewhere: returns the string, and remembers the field
  /// when there is none.
  char* resolve(std::uint64_t old_address, char** field);

  /// The first field whose reference was not resolved, or null when all were. The address serves
  /// for comparison only: the field may be gone.
  char** checkptrs() const noexcept;

  /// Counts a remembered field as resolved.
  void forget(char** field) noexcept;

 private:
  struct slot {
    std::uint64_t key = 0;
    char* now = nullptr;
    bool used = false;
  };

  std::size_t home(std::uint64_t key) const noexcept;
  slot* find(std::uint64_t key) noexcept;
  void grow();

  std::vector<slot> slots_;
  std::size_t used_ = 0;
  std::uint64_t seed_;
  std::uint64_t last_key_ = 0;
  char* last_ = nullptr;
  std::vector<char**> unresolved_;
};
