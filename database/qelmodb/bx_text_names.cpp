// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_text_names.h"

#include <algorithm>

#include "bx_records.h"

static_assert(bx_key_size >= 16, "the first bytes of a name are looked at together");

// The first entry is no name: it follows the last one while nothing is known to.
bx_text_names::bx_text_names(std::function<char*(std::string_view)> store)
    : store_(std::move(store)), entries_(1), last_(&entries_[0]) {
  entry& none = entries_[0];
  none.text.assign(bx_key_size, '\0');
  none.next = &none;
}

bool bx_text_names::is_longer_name(const entry& name, const char* bytes) noexcept {
  return name.text.size() < bx_key_size && std::memcmp(bytes, name.text.data(), name.text.size()) == 0 &&
         bytes[name.text.size()] == '"';
}

const bx_text_names::entry* bx_text_names::search(const char* bytes) {
  const std::string_view all(bytes, bx_key_size);
  const std::size_t quote = all.find('"');
  if (quote == std::string_view::npos) return nullptr;
  const std::string_view text = all.substr(0, quote);
  const auto next = static_cast<std::uint32_t>(entries_.size());
  const std::uint32_t number = numbers_.find_or_add(
      numbers_.hash_of(text), next, [this, text](std::uint32_t known) { return entries_[known].text == text; });
  // Memory running out here ends the load, and this object with it.
  entry* found = number == next ? make(text) : &entries_[number];
  last_->next = found;
  last_ = found;
  return found;
}

bx_text_names::entry* bx_text_names::make(std::string_view text) {
  entry& made = entries_.emplace_back();
  made.text = text;
  made.stored = store_(text);
  made.next = &entries_[0];
  char first[sizeof made.beginning] = {};
  char counts[sizeof first] = {};
  const std::size_t length = text.copy(first, sizeof first);
  std::fill_n(counts, length, '\xff');
  if (length < sizeof first) {
    first[length] = '"';
    counts[length] = '\xff';
  }
  std::memcpy(made.beginning, first, sizeof first);
  std::memcpy(made.significant, counts, sizeof counts);
  return &made;
}
