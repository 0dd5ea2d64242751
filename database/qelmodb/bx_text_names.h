// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names of wires as they are read from text, with what they were stored as. Like instances name the same wires in the
// same order, so the name that followed the last one before is compared first; mostly nothing is hashed.
#pragma once

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
    std::string text;        ///< as it stands in the file
    char* stored;            ///< borrowed
    std::uint32_t next = 0;  ///< which name followed the last time
  };

  /// The entry of the name at the beginning of these bytes, up to a quote. Null when there is no quote among the first
  /// bx_key_limit bytes.
  const entry* find(std::string_view bytes);

 private:
  const entry* search(std::string_view text);

  std::function<char*(std::string_view)> store_;
  std::deque<entry> entries_;  // the first is none
  bx_text_table numbers_;
  std::uint32_t last_ = 0;
};
