// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "flat_hash.h"

#include <bit>

namespace bench {

flat_hash::flat_hash(const flat_tree& flat)
    : mask_(std::bit_ceil(2 * flat.wires.size() + 2) - 1),
      shift_(std::countl_zero(mask_)),
      slots_((mask_ + 1) * sizeof(slot)) {
  for (std::uint32_t i = 0; i < flat.instances.size(); ++i) {
    const flat_instance& inst = flat.instances[i];
    for (std::uint32_t w = inst.first_wire; w < inst.first_wire + inst.wires; ++w) {
      const flat_wire& wire = flat.wires[w];
      slot* place = place_of(i, wire.name);
      if (place->instance_and_one == 0) *place = {i + 1, wire.name, wire.x, wire.y};
    }
  }
}

}  // namespace bench
