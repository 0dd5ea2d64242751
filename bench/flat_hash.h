// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// All wires of a device in one hash table, found by instance and name in one access to memory as a rule: the limit of
// finding wires by name.
#pragma once

#include <cstdint>

#include "bench_device.h"
#include "huge_block.h"

namespace bench {

class flat_hash {
 public:
  struct slot {
    std::uint32_t instance_and_one;  ///< 0 when the slot is free
    std::uint32_t name;
    std::int32_t x;
    std::int32_t y;
  };

  explicit flat_hash(const flat_tree& flat);

  /// The first wire of this name in the instance, or null.
  const slot* find(std::uint32_t instance, std::uint32_t name) const noexcept {
    const slot* found = place_of(instance, name);
    return found->instance_and_one != 0 ? found : nullptr;
  }

 private:
  slot* place_of(std::uint32_t instance, std::uint32_t name) const noexcept {
    auto* slots = slots_.as<slot>();
    const std::uint64_t key = (std::uint64_t{instance} << 32 | name) * 0x9e3779b97f4a7c15U;
    for (std::size_t i = key >> shift_;; i = (i + 1) & mask_) {
      if (slots[i].instance_and_one == 0) return slots + i;
      if (slots[i].instance_and_one == instance + 1 && slots[i].name == name) return slots + i;
    }
  }

  std::size_t mask_;
  int shift_;
  huge_block slots_;
};

}  // namespace bench
