// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_text_names.h"

#include "bx_records.h"
#include "ut_hash.h"

bx_text_names::bx_text_names(std::function<char*(std::string_view)> store)
    : store_(std::move(store)), entries_(1), slots_(256), seed_(ut_hash_seed()) {}

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
  const auto hash = static_cast<std::uint32_t>(ut_hash(text, seed_));
  std::uint32_t number = slot_of(text, hash).number;
  if (number == 0) {
    if (2 * entries_.size() > slots_.size()) grow();
    number = static_cast<std::uint32_t>(entries_.size());
    entries_.push_back({std::string(text), store_(text)});
    slot_of(text, hash) = {hash, number};
  }
  entries_[last_].next = number;
  last_ = number;
  return &entries_[number];
}

bx_text_names::slot& bx_text_names::slot_of(std::string_view text, std::uint32_t hash) noexcept {
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  while (slots_[at].number != 0 && (slots_[at].hash != hash || entries_[slots_[at].number].text != text)) {
    at = (at + 1) & mask;
  }
  return slots_[at];
}

void bx_text_names::grow() {
  std::vector<slot> old(2 * slots_.size());
  old.swap(slots_);
  const std::size_t mask = slots_.size() - 1;
  for (const slot& each : old) {
    if (each.number == 0) continue;
    std::size_t at = each.hash & mask;
    while (slots_[at].number != 0) at = (at + 1) & mask;
    slots_[at] = each;
  }
}
