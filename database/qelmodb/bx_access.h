// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The library's own way to what the classes keep from clients.
#pragma once

#include <atomic>

#include "bx_db.h"
#include "bx_name_store.h"
#include "bx_template_index.h"

/// How often the library has moved the left edge of an instance that may have siblings, or a client has said that it
/// did. An instance does not know its parent, so a parent that relies on the order of its children compares this with
/// what it saw last.
extern std::atomic<bx_ulong> bx_left_edges_moved;

/// Counts when the left edge of an instance is another one at the end of its life than at the beginning; whatever ended
/// the work in between.
class bx_left_edge_watch {
 public:
  explicit bx_left_edge_watch(const BX_INSTANCE& inst) noexcept : inst_(inst), left_edge_(inst.xmin) {}
  bx_left_edge_watch(const bx_left_edge_watch&) = delete;
  bx_left_edge_watch& operator=(const bx_left_edge_watch&) = delete;
  ~bx_left_edge_watch() {
    if (edges_below_ || inst_.xmin != left_edge_) ++bx_left_edges_moved;
  }

  /// Whether edges below the instance may have moved, too.
  void edges_below_may_move(bool may) noexcept { edges_below_ = may; }

 private:
  const BX_INSTANCE& inst_;
  bx_long left_edge_;
  bool edges_below_ = false;
};

struct bx_access {
  static char separator() noexcept { return BX_INSTANCE::separator; }
  static void settoplevel(BX_INSTANCE& inst, BX_DB* db) { inst.settoplevel(db); }
  static void note_child_order(BX_INSTANCE& inst) noexcept { inst.note_child_order(); }
  static void release_content(BX_DB& db) { db.release_content(); }
  static bx_compression_aids* aids(BX_DB& db) noexcept { return db.store_->aids; }
  static bx_name_store& names(BX_DB& db) noexcept { return *db.store_; }

  /// Whether all instances refer to templates of the database.
  static bool is_compressed(const BX_DB& db) noexcept {
    return db.basicasstemplate != nullptr && !db.store_->half_compressed;
  }
};
