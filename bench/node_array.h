// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// All wires of a device sorted by node, and a hash table of the nodes: the limit of finding what meets at a node.
#pragma once

#include <cstdint>
#include <vector>

#include "questions.h"

namespace bench {

class node_array {
 public:
  explicit node_array(const flat_tree& flat);

  /// The instances of all wires at the node.
  void count_wires(const BX_POINT& node, cover_sums& sums) const noexcept {
    const slot& found = slots_[place_of(key_of(node.x, node.y))];
    for (std::uint32_t i = found.begin; i < found.end; ++i) sums.count(instances_[i]);
  }

 private:
  struct slot {
    std::uint64_t key = 0;
    std::uint32_t begin = 0;
    std::uint32_t end = 0;  // the same as begin: the slot is free
  };

  static std::uint64_t key_of(std::int32_t x, std::int32_t y) noexcept {
    return std::uint64_t{static_cast<std::uint32_t>(x)} << 32 | static_cast<std::uint32_t>(y);
  }

  std::size_t place_of(std::uint64_t key) const noexcept {
    std::size_t i = (key * 0x9e3779b97f4a7c15U) >> 32 & mask_;
    while (slots_[i].begin != slots_[i].end && slots_[i].key != key) i = (i + 1) & mask_;
    return i;
  }

  std::vector<const BX_INSTANCE*> instances_;
  std::vector<slot> slots_;
  std::size_t mask_;
};

}  // namespace bench
