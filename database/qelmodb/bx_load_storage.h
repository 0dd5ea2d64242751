// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Where the wires of a database lie that a load brings.
#pragma once

#include <memory>

#include "bx_access.h"

/// While it lives, wires that are read into the database share storage.
class bx_load_storage {
 public:
  explicit bx_load_storage(BX_DB& db) : store_(bx_access::names(db)) {
    if (store_.loaded_wires == nullptr) store_.loaded_wires = std::make_unique<UT_SLABS>();
    store_.slabs = store_.loaded_wires.get();
  }
  bx_load_storage(const bx_load_storage&) = delete;
  bx_load_storage& operator=(const bx_load_storage&) = delete;
  ~bx_load_storage() { store_.slabs = nullptr; }

 private:
  bx_name_store& store_;
};

/// Makes storage for the next count wires of an instance, which is to have all of them in the end. Shared storage
/// cannot grow, so it is for lists only whose whole length is known.
inline void bx_reserve_wires(BX_INSTANCE& inst, bx_long count, bx_long all) {
  UT_SLABS* slabs = inst.top != nullptr ? bx_access::names(*inst.top).slabs : nullptr;
  if (slabs == nullptr || count == 0 || count < all || inst.wires.getcount() != 0) {
    inst.wires.a_reserve(count);
    return;
  }
  inst.wires.empty();
  inst.wires.a_borrow(slabs->take(static_cast<std::size_t>(count) * sizeof(BX_WIRE)), count);
}
