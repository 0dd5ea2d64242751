// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Binding trees to a database: every name becomes the database's interned string.
#include <cstdlib>
#include <optional>
#include <vector>

#include "bx_access.h"
#include "qelmoext.h"
#include "ut_string.h"

namespace {

char* name_in(BX_DB* db, bx_name_store* store, const char* old) {
  if (old == nullptr) return nullptr;
  return db != nullptr ? store->intern(old) : ut_strdup(old);
}

}  // namespace

// Names one instance anew. What was private when it joins a database: its wires' names are freed, but its
// own name stays valid, because clients hold on to the name by which they made the instance; the database
// keeps it. An instance that leaves a database frees nothing: the strings are that database's.
void BX_INSTANCE::rebind(BX_DB* db) {
  const bool was_alone = top == nullptr;
  bx_name_store* store = db != nullptr ? db->store_ : nullptr;

  char* new_name = name_in(db, store, name);
  if (was_alone && store != nullptr && !nameborrowed) store->keep(name);
  name = new_name;
  if (db == nullptr) nameborrowed = false;

  // Storage that a load made for many lists stays with the database that was loaded.
  wires.a_own();
  instances.a_own();
  for (BX_WIRE& wire : wires) {
    char* old = wire.name;
    wire.name = name_in(db, store, old);
    if (was_alone && !wire.nameborrowed) std::free(old);
    if (db == nullptr) wire.nameborrowed = false;
  }
}

void BX_INSTANCE::settoplevel(BX_DB* db) {
  if (db == top) return;
  std::optional<qelmodb::name_batch> batch;
  if (db != nullptr) batch.emplace(*db);
  std::vector<BX_INSTANCE*> pending{this};
  while (!pending.empty()) {
    BX_INSTANCE* inst = pending.back();
    pending.pop_back();
    inst->rebind(db);
    inst->top = db;
    for (BX_INSTANCE* child : inst->instances) {
      if (child != nullptr && child->top != db) pending.push_back(child);
    }
  }
}
