// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names and wires of a tree from the templates it refers to.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <unordered_map>

#include "bx_ass_template.h"
#include "bx_basic_ass_template.h"
#include "bx_instance.h"

/// A wire as its template has it.
struct bx_restored_wire {
  char* name;
  BX_POINT node;
};

/// Tells what instances get from their templates, and changes none. The templates, of as many databases as there
/// are, must not change meanwhile.
class bx_restorer {
 public:
  bx_restorer();
  bx_restorer(const bx_restorer&) = delete;
  bx_restorer& operator=(const bx_restorer&) = delete;
  ~bx_restorer();

  /// Takes up an instance, whose database must be known. False when its reference leads nowhere. The instance must
  /// stay while name, wire_count and wire are asked for.
  bool select(const BX_INSTANCE& inst);

  char* name() const noexcept { return name_; }
  int wire_count() const noexcept { return wire_count_; }

  /// Wire k, 0 <= k < wire_count(). False when a list entry or an offset map that it needs does not exist. Ends the
  /// process when the template does not cover the instance's column or row.
  bool wire(int k, bx_restored_wire& restored) const;

  /// Fills in names and nodes of the selected instance's wire_count() wires. The array must not move: wires of a switch
  /// matrix are queued and filled together with those of the next matrices, at the latest by finish(). False when a
  /// wire that was filled by this call had no template entry. Faults are reported in the order of the tree.
  bool fill(BX_WIRE* wires);
  bool finish();

 private:
  class flat_set;

  /// Where a switch matrix is.
  struct place {
    std::uint16_t column;
    std::uint16_t row;
    BX_POINT corner;
  };

  /// Wires of a switch matrix to be filled.
  struct waiting {
    place at;
    BX_WIRE* wires;
  };

  bool wait_for_others(BX_WIRE* wires);
  bool finish_in_order(std::size_t count);

  flat_set& flat_set_of(BASIC_ASS_TEMPLATE& set);

  std::unordered_map<const BASIC_ASS_TEMPLATE*, std::unique_ptr<flat_set>> flat_sets_;
  const BASIC_ASS_TEMPLATE* last_set_ = nullptr;
  flat_set* last_flat_ = nullptr;

  const BX_INSTANCE* inst_ = nullptr;
  const ASS_TEMPLATE* layout_ = nullptr;  // null for a switch matrix, which has the next three
  flat_set* matrices_ = nullptr;
  const std::uint16_t* list_ = nullptr;
  place place_ = {};
  char* name_ = nullptr;
  int wire_count_ = 0;

  // Switch matrices with one wire list, few enough for their wires to stay near.
  std::array<waiting, 16> waiting_;
  std::size_t waiting_count_ = 0;
  flat_set* waiting_set_ = nullptr;
  const std::uint16_t* waiting_list_ = nullptr;
  int waiting_wires_ = 0;
};

/// Restores the subtree. False when a reference led nowhere; all others are restored all the same. Ends early, and
/// false, when go_on gives false; it is asked now and then.
bool bx_restore_tree(BX_INSTANCE& root, const std::function<bool()>& go_on);
