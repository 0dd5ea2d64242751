// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a database keeps beside its public fields: an index that finds a text of the name table whatever its order, the
// strings and lists that nothing else holds but that must live as long as the database, and the storage of lists that
// were loaded.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "bx_db.h"
#include "ut_slabs.h"

class bx_compression_aids;
class bx_load_storage;

/// How often a record that was read has cut a string at its "$" which it shares with others. Whose string it is the
/// reader cannot tell: clients fill fix-up tables with strings of any database. So each database compares this with
/// what it saw last.
extern std::atomic<bx_ulong> bx_shared_names_cut;

/// Storage of lists that a load brings.
struct bx_loaded_lists {
  UT_SLABS wires;
  UT_SLABS children;
};

class bx_name_store {
 public:
  explicit bx_name_store(DARRAY_NAME& table);
  bx_name_store(const bx_name_store&) = delete;
  bx_name_store& operator=(const bx_name_store&) = delete;

  /// Frees the kept strings and those of the table, each once.
  ~bx_name_store();

  /// The table's string of this text, added when there is none. O(1) on average for a known text.
  char* intern(std::string_view text);

  /// The table is another one.
  void invalidate() noexcept {
    indexed_ = -1;
    owned_valid_ = false;
  }

  /// While a batch is open new names are only appended; closing the outermost one restores the order at the cost
  /// of one sort. Nobody may look at the table in between.
  void open_batch() noexcept;
  void close_batch();

  /// Keeps a string until the database is destroyed, also one that is kept or in the table already. Null is ignored.
  /// Takes no ownership when it throws.
  void keep(char* string);

  /// Keeps the cell lists of a grid likewise.
  void keep(std::unique_ptr<DARRAY_BX_INSTPTR[]> lists) { kept_lists_.push_back(std::move(lists)); }

  /// Makes room for so many strings more: keeping these does not throw.
  void prepare_to_keep(std::size_t strings);

  /// Moves all strings of the table to those kept, and empties it. Room was made.
  void keep_table() noexcept;

  /// While a load is under way, where its instances and lists are stored; null otherwise.
  bx_load_storage* loading = nullptr;

  /// The storage of lists of wires and children that were loaded, shared with the storage of the instances of that
  /// load: one that a client took out of the tree may outlive the database. The next load replaces it.
  std::shared_ptr<bx_loaded_lists> loaded_lists;

  /// Borrowed; null unless the database is being compressed.
  bx_compression_aids* aids = nullptr;

  /// The last compressing did not come to its end.
  bool half_compressed = false;

  /// Whether the table or the kept strings hold this very string.
  bool owns(const char* string);

 private:
  struct slot {
    char* text;
    std::uint32_t hash;
  };

  std::uint32_t hash_of(std::string_view text) const noexcept;
  slot* find(std::string_view text, std::uint32_t hash) noexcept;
  void refresh();
  void rehash(std::size_t size);
  bool enter(char* text);

  DARRAY_NAME& table_;
  std::uint64_t seed_;
  std::vector<slot> slots_;
  std::size_t used_ = 0;
  bx_long indexed_ = -1;  // entries of the table that the index covers; -1: build it anew
  bx_ulong cuts_seen_ = 0;
  bool ascending_ = true;  // the indexed part of the table is sorted
  bx_long batch_start_ = -1;
  int batches_ = 0;          // open ones, nested
  std::vector<char*> kept_;  // some more than once
  std::vector<std::unique_ptr<DARRAY_BX_INSTPTR[]>> kept_lists_;
  std::unordered_set<const char*> owned_;
  bool owned_valid_ = false;
};
