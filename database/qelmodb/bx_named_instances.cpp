// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_named_instances.h"

#include <array>
#include <cstring>

#include "bx_order.h"
#include "ut_string.h"

// Gives names numbers in the order of their first appearance.
class bx_named_instances::numbering {
 public:
  numbering(bx_text_table& table, std::size_t expected) : table_(table) { numbers_.reserve(expected); }

  void add(const char* name) {
    // Interned names, of which a few come again and again, are known by their address.
    habit& usual = habits_[(reinterpret_cast<std::uintptr_t>(name) >> 4) % habits_.size()];
    if (usual.name != name || name == nullptr) usual = {name, number_of_text(ut_text(name))};
    numbers_.push_back(usual.number);
  }

  /// Of all names that were added, in that order.
  const std::vector<std::uint32_t>& numbers() const noexcept { return numbers_; }

  /// How many names there are.
  std::size_t count() const noexcept { return texts_.size(); }

 private:
  struct habit {
    const char* name = nullptr;
    std::uint32_t number = 0;
  };

  std::uint32_t number_of_text(const char* text) {
    const auto next = static_cast<std::uint32_t>(texts_.size());
    const std::uint32_t number = table_.find_or_add(
        table_.hash_of(text), next, [&](std::uint32_t known) { return std::strcmp(texts_[known], text) == 0; });
    if (number == next) texts_.push_back(text);
    return number;
  }

  bx_text_table& table_;
  std::vector<std::uint32_t> numbers_;
  std::vector<const char*> texts_;
  std::array<habit, 1024> habits_;
};

bx_named_instances::bx_named_instances(std::size_t count, UT_SLABS& slabs)
    : sorted_(UT_SLAB_ALLOCATOR<BX_INSTANCE*>(slabs)), numbering_(std::make_unique<numbering>(numbers_, count)) {}

bx_named_instances::~bx_named_instances() = default;

void bx_named_instances::add(const BX_INSTANCE& inst) { numbering_->add(inst.name); }

void bx_named_instances::finish(std::span<BX_INSTANCE* const> instances) {
  const std::vector<std::uint32_t>& numbers = numbering_->numbers();
  begins_.assign(numbering_->count() + 1, 0);
  for (const std::uint32_t number : numbers) ++begins_[number + 1];
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  std::vector<std::uint32_t> next = begins_;
  sorted_.resize(instances.size());
  for (std::size_t i = 0; i < instances.size(); ++i) sorted_[next[numbers[i]]++] = instances[i];
  numbering_.reset();
}

std::span<BX_INSTANCE* const> bx_named_instances::find(const char* name) const noexcept {
  const std::uint32_t number = numbers_.find(numbers_.hash_of(name), [this, name](std::uint32_t known) {
    return bx_compare_names(sorted_[begins_[known]]->name, name) == 0;
  });
  if (number == bx_text_table::none) return {};
  return std::span(sorted_).subspan(begins_[number], begins_[number + 1] - begins_[number]);
}

std::size_t bx_named_instances::memory() const noexcept {
  return sorted_.capacity() * sizeof(BX_INSTANCE*) + begins_.capacity() * sizeof(std::uint32_t) + numbers_.memory();
}
