// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_text_names.h"

#include "bx_records.h"

bx_text_names::bx_text_names(std::function<char*(std::string_view)> store) : store_(std::move(store)), entries_(1) {}

const bx_text_names::entry* bx_text_names::find(std::string_view bytes) {
  const std::uint32_t guess = entries_[last_].next;
  const entry& usual = entries_[guess];
  if (guess != 0 && bytes.starts_with(usual.text) && bytes.size() > usual.text.size() &&
      bytes[usual.text.size()] == '"') {
    last_ = guess;
    return &usual;
  }
  const std::size_t quote = bytes.substr(0, bx_key_limit).find('"');
  return quote != std::string_view::npos ? search(bytes.substr(0, quote)) : nullptr;
}

const bx_text_names::entry* bx_text_names::search(std::string_view text) {
  const auto next = static_cast<std::uint32_t>(entries_.size());
  const std::uint32_t number = numbers_.find_or_add(
      numbers_.hash_of(text), next, [this, text](std::uint32_t known) { return entries_[known].text == text; });
  // Memory running out here ends the load, and this object with it.
  if (number == next) entries_.push_back({std::string(text), store_(text)});
  entries_[last_].next = number;
  last_ = number;
  return &entries_[number];
}
