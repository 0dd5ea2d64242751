// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_named_instances.h"

#include <array>

#include "ut_string.h"

// Gives names numbers in the order of their first appearance.
class bx_named_instances::numbering {
 public:
  explicit numbering(std::uint64_t seed) : seed_(seed), slots_(bx_text_slots_for(64)) {}

  std::uint32_t number_of(const char* name) {
    // Interned names, of which a few come again and again, are known by their address.
    habit& usual = habits_[(reinterpret_cast<std::uintptr_t>(name) >> 4) % habits_.size()];
    if (usual.name != name || name == nullptr) usual = {name, number_of_text(ut_text(name))};
    return usual.number;
  }

  const std::vector<const char*>& texts() const noexcept { return texts_; }
  std::vector<bx_text_slot> take_slots() noexcept { return std::move(slots_); }

 private:
  struct habit {
    const char* name = nullptr;
    std::uint32_t number = 0;
  };

  std::uint32_t number_of_text(const char* text) {
    const std::uint32_t hash = bx_text_hash(text, seed_);
    const auto text_of = [this](std::uint32_t number) noexcept { return texts_[number]; };
    bx_text_slot* slot = bx_text_slot_of(slots_.data(), slots_.size() - 1, hash, text, text_of);
    if (slot->number_and_one != 0) return slot->number_and_one - 1;
    texts_.push_back(text);
    const auto number = static_cast<std::uint32_t>(texts_.size()) - 1;
    *slot = {hash, number + 1};
    if (2 * texts_.size() > slots_.size()) grow();
    return number;
  }

  void grow() {
    std::vector<bx_text_slot> larger(2 * slots_.size());
    for (const bx_text_slot& each : slots_) {
      if (each.number_and_one == 0) continue;
      std::size_t i = each.hash & (larger.size() - 1);
      while (larger[i].number_and_one != 0) i = (i + 1) & (larger.size() - 1);
      larger[i] = each;
    }
    slots_.swap(larger);
  }

  std::uint64_t seed_;
  std::vector<const char*> texts_;
  std::vector<bx_text_slot> slots_;
  std::array<habit, 1024> habits_;
};

bx_named_instances::bx_named_instances(std::span<BX_INSTANCE* const> instances, std::uint64_t seed)
    : seed_(seed), sorted_(instances.size()) {
  numbering names(seed);
  std::vector<std::uint32_t> numbers;
  numbers.reserve(instances.size());
  for (const BX_INSTANCE* inst : instances) numbers.push_back(names.number_of(inst->name));
  begins_.assign(names.texts().size() + 1, 0);
  for (const std::uint32_t number : numbers) ++begins_[number + 1];
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  std::vector<std::uint32_t> next = begins_;
  for (std::size_t i = 0; i < instances.size(); ++i) sorted_[next[numbers[i]]++] = instances[i];
  slots_ = names.take_slots();
}

std::span<BX_INSTANCE* const> bx_named_instances::find(const char* name) const noexcept {
  const auto text_of = [this](std::uint32_t number) noexcept { return ut_text(sorted_[begins_[number]]->name); };
  const bx_text_slot* slot =
      bx_text_slot_of(slots_.data(), slots_.size() - 1, bx_text_hash(name, seed_), name, text_of);
  if (slot->number_and_one == 0) return {};
  const std::uint32_t number = slot->number_and_one - 1;
  return std::span(sorted_).subspan(begins_[number], begins_[number + 1] - begins_[number]);
}

std::size_t bx_named_instances::memory() const noexcept {
  return sorted_.capacity() * sizeof(BX_INSTANCE*) + begins_.capacity() * sizeof(std::uint32_t) +
         slots_.capacity() * sizeof(bx_text_slot);
}
