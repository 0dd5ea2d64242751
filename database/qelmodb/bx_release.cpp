// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Destruction: which names are freed, and how a tree of any depth goes without recursion.
#include <algorithm>
#include <cstdlib>
#include <new>
#include <vector>

#include "bx_access.h"
#include "bx_fetch.h"
#include "bx_grid.h"
#include "bx_wire_name_index.h"
#include "qelmotmplt.h"

// Gathers the names to be freed while BX_DB::MPAR_FLOW is set. Clients may have put one string into many
// places of a tree, so each is freed once, after the last place was looked at.
class BX_INSTANCE::name_releaser {
 public:
  name_releaser() = default;
  name_releaser(const name_releaser&) = delete;
  name_releaser& operator=(const name_releaser&) = delete;

  // What there is no memory to remember is not freed.
  void take(char*& string, BX_DB* owner) noexcept {
    try {
      if (string == nullptr || (owner != nullptr && bx_access::names(*owner).owns(string))) return;
      strings_.push_back(string);
      string = nullptr;
    } catch (const std::bad_alloc&) {
    }
  }

  ~name_releaser() {
    std::sort(strings_.begin(), strings_.end());
    strings_.erase(std::unique(strings_.begin(), strings_.end()), strings_.end());
    for (char* string : strings_) bx_free_name(string);
  }

 private:
  std::vector<char*> strings_;
};

namespace {

void free_private(char*& string, bool borrowed) noexcept {
  if (borrowed) return;
  std::free(string);
  string = nullptr;
}

}  // namespace

void BX_INSTANCE::release_names(name_releaser& releaser) {
  if (BX_DB::MPAR_FLOW != 0) {
    if (!nameborrowed) releaser.take(name, top);
    for (BX_WIRE& wire : wires) {
      if (!wire.nameborrowed) releaser.take(wire.name, top);
    }
  } else if (top == nullptr) {
    free_private(name, nameborrowed);
    for (BX_WIRE& wire : wires) free_private(wire.name, wire.nameborrowed);
  }
}

// Deletes the subtree below this instance, leaves first. The way back up is kept in the tree itself: the
// place of the child that is being visited holds the parent of its owner meanwhile. So neither stack nor
// memory is needed, whatever the depth.
void BX_INSTANCE::destroy_children(name_releaser& releaser) {
  BX_INSTANCE* parent = nullptr;
  BX_INSTANCE* current = this;
  for (;;) {
    const bx_long count = current->instances.getcount();
    if (count == 0) {
      if (current == this) return;
      BX_INSTANCE* done = current;
      current = parent;
      parent = current->instances[current->instances.getcount() - 1];
      current->instances.a_droplast();
      delete done;
      continue;
    }
    BX_INSTANCE*& place = current->instances[count - 1];
    BX_INSTANCE* child = place;
    constexpr bx_long ahead = 4;
    if (count > ahead) bx_fetch(current->instances[count - 1 - ahead]);
    if (child != nullptr && BX_DB::MPAR_FLOW != 0) child->release_names(releaser);
    if (child == nullptr || child->instances.getcount() == 0) {
      current->instances.a_droplast();
      delete child;
      continue;
    }
    place = parent;
    parent = current;
    current = child;
  }
}

void BX_INSTANCE::destroy_subtree() {
  name_releaser releaser;
  release_names(releaser);
  destroy_children(releaser);
}

BX_INSTANCE::~BX_INSTANCE() {
  // Most have nothing left to destroy: their children are gone, and their names are the database's.
  if (top == nullptr || BX_DB::MPAR_FLOW != 0 || instances.getcount() != 0) destroy_subtree();
}

// Everything that a load replaces. Strings stay valid as long as the database does.
void BX_DB::release_templates() {
  for (const ASS_TEMPLATE* made : asstemplates) delete made;
  asstemplates.clear();
  delete basicasstemplate;
  basicasstemplate = nullptr;
  store_->half_compressed = false;
}

void BX_DB::release_content() {
  store_->prepare_to_keep(1 + static_cast<std::size_t>(names.getcount()));  // from here on nothing fails
  delete grid;
  grid = nullptr;
  release_templates();
  if (top == nullptr && !nameborrowed) store_->keep(name);
  name = nullptr;
  nameborrowed = false;
  destroy_subtree();
  wires.empty();
  instances.empty();
  store_->loaded_lists.reset();
  store_->keep_table();
  top = this;
  note_child_order();
}

BX_DB::~BX_DB() {
  delete grid;
  release_templates();
  destroy_subtree();
  // Whatever names are left belong to the table or to the strings kept: hide them from ~BX_INSTANCE.
  name = nullptr;
  wires.empty();
  for (char* string : names) bx_free_name(string);
  delete store_;
}
