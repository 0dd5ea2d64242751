// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names of wires as they are read from text, with what they were stored as. Like instances name the same wires in the
// same order, so the name that followed the last one before is compared first; mostly nothing is hashed.
#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <string_view>

#include "bx_text_table.h"

class bx_text_names {
 public:
  /// store(text) gives the string that stands for a name of a file from then on.
  explicit bx_text_names(std::function<char*(std::string_view)> store);

  struct entry {
    std::string text;                ///< as it stands in the file
    char* stored = nullptr;          ///< borrowed
    entry* next = nullptr;           ///< which name followed the last time
    std::uint64_t beginning[2]{};    ///< the first bytes of the name and the quote behind it
    std::uint64_t significant[2]{};  ///< which bits of them count; all of a longer name
  };

  /// The entry of the name at the beginning of these bytes, up to a quote. Null when there is no quote among the first
  /// bx_key_size bytes; so many must be readable.
  const entry* find(const char* bytes) {
    entry* usual = last_->next;
    if (!stands_at(*usual, bytes)) return search(bytes);
    last_ = usual;
    return usual;
  }

 private:
  static bool stands_at(const entry& name, const char* bytes) noexcept {
    std::uint64_t first[2];
    std::memcpy(first, bytes, sizeof first);
    const std::uint64_t differing =
        ((first[0] ^ name.beginning[0]) & name.significant[0]) | ((first[1] ^ name.beginning[1]) & name.significant[1]);
    return differing == 0 && (name.text.size() < sizeof first || is_longer_name(name, bytes));
  }
  static bool is_longer_name(const entry& name, const char* bytes) noexcept;

  const entry* search(const char* bytes);
  entry* make(std::string_view text);

  std::function<char*(std::string_view)> store_;
  std::deque<entry> entries_;  // the first is none
  bx_text_table numbers_;
  entry* last_;
};
