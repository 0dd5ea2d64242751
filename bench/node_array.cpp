// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "node_array.h"

#include <algorithm>
#include <bit>

namespace bench {

node_array::node_array(const flat_tree& flat)
    : slots_(std::bit_ceil(2 * flat.wires.size() + 2)), mask_(slots_.size() - 1) {
  struct placed {
    std::uint64_t key;
    const BX_INSTANCE* inst;
  };
  std::vector<placed> all;
  all.reserve(flat.wires.size());
  for (std::size_t i = 0; i < flat.instances.size(); ++i) {
    const flat_instance& inst = flat.instances[i];
    for (std::uint32_t w = inst.first_wire; w < inst.first_wire + inst.wires; ++w) {
      all.push_back({key_of(flat.wires[w].x, flat.wires[w].y), flat.origins[i]});
    }
  }
  std::stable_sort(all.begin(), all.end(), [](const placed& a, const placed& b) { return a.key < b.key; });
  instances_.reserve(all.size());
  for (std::uint32_t i = 0; i < all.size(); ++i) {
    instances_.push_back(all[i].inst);
    slot& node = slots_[place_of(all[i].key)];
    if (node.begin == node.end) node = {all[i].key, i, i};
    node.end = i + 1;
  }
}

}  // namespace bench
