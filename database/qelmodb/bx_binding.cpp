// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Binding trees to a database: every name becomes the database's interned string.
#include <cstdlib>
#include <optional>
#include <span>
#include <vector>

#include "bx_access.h"
#include "bx_walk.h"
#include "qelmoext.h"
#include "ut_string.h"

// A subtree on its way into a database, or out of one. Everything that may fail is done first, and leaves the subtree
// as it was: names in the database's table that nobody uses are no harm.
class BX_INSTANCE::binding {
 public:
  binding(BX_INSTANCE& root, BX_DB* db)
      : db_(db), store_(db != nullptr ? &bx_access::names(*db) : nullptr), root_(&root), instances_(&root_, 1) {
    if (root.instances.getcount() != 0) gather();
  }
  binding(const binding&) = delete;
  binding& operator=(const binding&) = delete;

  // Names that were copied and found no place.
  ~binding() {
    if (db_ != nullptr) return;
    for (char* copy : names_) std::free(copy);
  }

  void prepare() {
    std::size_t names = 0;
    for (BX_INSTANCE* inst : instances_) {
      // Storage that a load made for many lists is freed with all its instances. One that goes its own way should not
      // hold back that of all others.
      inst->wires.a_own();
      inst->instances.a_own();
      names += 1 + static_cast<std::size_t>(inst->wires.getcount());
    }
    names_.reserve(names);
    if (store_ != nullptr) store_->prepare_to_keep(instances_.size());
    for (const BX_INSTANCE* inst : instances_) {
      prepare_name(inst->name);
      for (const BX_WIRE& wire : inst->wires) prepare_name(wire.name);
    }
  }

  void commit() noexcept {
    std::size_t next = 0;
    for (BX_INSTANCE* inst : instances_) next = rebind(*inst, next);
    names_.clear();
  }

 private:
  // Parents before children, children in their order: new names come into the table in the order of this walk, which
  // shows where the table is not sorted.
  void gather() {
    bx_walk_steps(*root_, [this](BX_INSTANCE& inst, bx_long /*depth*/) {
      if (inst.top == db_) return bx_step::past;
      gathered_.push_back(&inst);
      return bx_step::into;
    });
    instances_ = gathered_;
  }

  void prepare_name(const char* old) {
    if (old == nullptr) {
      names_.push_back(nullptr);
    } else {
      names_.push_back(store_ != nullptr ? store_->intern(old) : ut_strdup(old));
    }
  }

  // Names one instance anew. What was private when it joins a database: its wires' names are freed, but its own name
  // stays valid, because clients hold on to the name by which they made the instance; the database keeps it. An
  // instance that leaves a database frees nothing: the strings are that database's.
  std::size_t rebind(BX_INSTANCE& inst, std::size_t next) noexcept {
    const bool was_alone = inst.top == nullptr;
    char* const old_name = inst.name;
    if (was_alone && store_ != nullptr && !inst.nameborrowed) store_->keep(old_name);
    inst.name = names_[next++];
    if (db_ == nullptr) inst.nameborrowed = false;
    for (BX_WIRE& wire : inst.wires) {
      char* const fresh = names_[next++];
      // A client may have made the wire with a string of the database, or with that of the instance.
      const bool is_its_own = wire.name != fresh && wire.name != old_name;
      if (was_alone && !wire.nameborrowed && is_its_own) std::free(wire.name);
      wire.name = fresh;
      if (db_ == nullptr) wire.nameborrowed = false;
    }
    inst.top = db_;
    return next;
  }

  BX_DB* db_;
  bx_name_store* store_;
  BX_INSTANCE* root_;
  std::vector<BX_INSTANCE*> gathered_;       // empty for an instance without children: most come one by one
  std::span<BX_INSTANCE* const> instances_;  // those to be bound
  std::vector<char*> names_;                 // of all instances and their wires, in their order
};

void BX_INSTANCE::settoplevel(BX_DB* db) {
  if (db == top) return;
  std::optional<qelmodb::name_batch> batch;
  if (db != nullptr) batch.emplace(*db);
  binding bound(*this, db);
  bound.prepare();
  bound.commit();
}
