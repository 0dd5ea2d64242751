// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Where the tree lies that a load brings: its instances in places of a pool, its lists in storage of the database.
#pragma once

#include <memory>

#include "bx_access.h"
#include "ut_pool.h"

/// While it lives, what is read into the database shares storage.
class bx_load_storage {
 public:
  explicit bx_load_storage(BX_DB& db)
      : db_(db), store_(bx_access::names(db)), instances_(sizeof(BX_INSTANCE), lists_of(store_)) {
    store_.loading = this;
  }
  bx_load_storage(const bx_load_storage&) = delete;
  bx_load_storage& operator=(const bx_load_storage&) = delete;
  ~bx_load_storage() {
    store_.loading = nullptr;
    wires().trim();
    children().trim();
  }

  /// That of the load of this database, null when there is none under way.
  static bx_load_storage* of(BX_DB* db) noexcept { return db != nullptr ? bx_access::names(*db).loading : nullptr; }

  /// That which may store the lists of an instance, null when there is none. An instance that found no place in the
  /// pool may outlive the storage of lists. The root does not: it is the database.
  static bx_load_storage* serving(const BX_INSTANCE& inst) noexcept {
    bx_load_storage* const storage = of(inst.top);
    return storage != nullptr && (&inst == &storage->db_ || UT_POOL::holds(&inst)) ? storage : nullptr;
  }

  /// Apart from each other: whoever walks the tree does not come past its wires.
  UT_SLABS& wires() noexcept { return store_.loaded_lists->wires; }
  UT_SLABS& children() noexcept { return store_.loaded_lists->children; }
  UT_POOL& instances() noexcept { return instances_; }

 private:
  static std::shared_ptr<bx_loaded_lists> lists_of(bx_name_store& store) {
    if (store.loaded_lists == nullptr) store.loaded_lists = std::make_shared<bx_loaded_lists>();
    return store.loaded_lists;
  }

  BX_DB& db_;
  bx_name_store& store_;
  UT_POOL instances_;
};

/// An instance of a database that is filled next.
inline std::unique_ptr<BX_INSTANCE> bx_new_instance(BX_DB* db) {
  bx_load_storage* storage = bx_load_storage::of(db);
  void* place = storage != nullptr ? storage->instances().take() : nullptr;
  std::unique_ptr<BX_INSTANCE> fresh(place != nullptr ? new (place) BX_INSTANCE(nullptr, 0, 0, 0, 0)
                                                      : new BX_INSTANCE(nullptr, 0, 0, 0, 0));
  fresh->top = db;
  return fresh;
}

/// Makes room for the next count of the all elements that a list will have in the end. Uses shared storage, when there
/// is one, only for a list that gets them all at once, because that storage cannot grow. A count that a file says may
/// be negative, and then means none.
template <class T>
void bx_reserve(UT_DARRAY<T>& list, UT_SLABS* storage, bx_long count, bx_long all) {
  if (count <= 0) return;
  if (storage == nullptr || count < all || list.getcount() != 0) {
    list.a_reserve(count);
    return;
  }
  list.empty();
  list.a_borrow(storage->take(static_cast<std::size_t>(count) * sizeof(T)), count);
}

inline void bx_reserve_wires(BX_INSTANCE& inst, bx_long count, bx_long all) {
  bx_load_storage* storage = bx_load_storage::serving(inst);
  bx_reserve(inst.wires, storage != nullptr ? &storage->wires() : nullptr, count, all);
}

inline void bx_reserve_children(BX_INSTANCE& inst, bx_long count, bx_long all) {
  bx_load_storage* storage = bx_load_storage::serving(inst);
  bx_reserve(inst.instances, storage != nullptr ? &storage->children() : nullptr, count, all);
}
