// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The library's own way to what the classes keep from clients.
#pragma once

#include "bx_db.h"
#include "bx_name_store.h"

struct bx_access {
  static char separator() noexcept { return BX_INSTANCE::separator; }
  static void settoplevel(BX_INSTANCE& inst, BX_DB* db) { inst.settoplevel(db); }
  static void note_child_order(BX_INSTANCE& inst) noexcept { inst.note_child_order(); }
  static void release_content(BX_DB& db) { db.release_content(); }
  static bx_name_store& names(BX_DB& db) noexcept { return *db.store_; }
};

/// Opens a batch of new names for the time of a scope; a null database is ignored.
class bx_name_batch {
 public:
  explicit bx_name_batch(BX_DB* db) noexcept : db_(db) {
    if (db_ != nullptr) bx_access::names(*db_).open_batch();
  }
  bx_name_batch(const bx_name_batch&) = delete;
  bx_name_batch& operator=(const bx_name_batch&) = delete;
  ~bx_name_batch() {
    if (db_ != nullptr) bx_access::names(*db_).close_batch();
  }

 private:
  BX_DB* db_;
};
