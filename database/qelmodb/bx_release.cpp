// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Destruction: which names are freed, and how a tree of any depth is destroyed without recursion.
#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

#include "bx_access.h"
#include "bx_fetch.h"
#include "bx_former_names.h"
#include "bx_grid.h"
#include "bx_own_classes.h"
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
  if (!std::exchange(has_former_names_, false)) return;
  for (char* former : bx_take_former_names(*this)) {
    if (BX_DB::MPAR_FLOW != 0) {
      releaser.take(former, top);
    } else {
      std::free(former);
    }
  }
}

// Destroys a subtree.
//
// Plain instances are destroyed by a walk that needs no stack. An instance of a derived class has a destructor of its
// client's, which sees the instance with its name, wires and children. So the walk deletes it as it is, and its
// children are destroyed by ~BX_INSTANCE, before the parent's memory is freed: a child may look at its parent. Derived
// instances that are nested very deep would need as much stack. From a depth on their children are noted and destroyed
// later.
class BX_INSTANCE::destroyer {
 public:
  destroyer() = default;
  destroyer(const destroyer&) = delete;
  destroyer& operator=(const destroyer&) = delete;

  // What belongs to the root, but not the root.
  void destroy_content(BX_INSTANCE& root) {
    root.release_names(names_);
    destroy_children(root);
    while (!left_.empty()) {
      BX_INSTANCE* const next = left_.back();
      left_.pop_back();
      destroy(next);
    }
  }

  // The work that is just deleting this very instance; null when it is deleted by somebody else.
  static destroyer* of(const BX_INSTANCE& inst) noexcept {
    destroyer* const work = at_work();
    return work != nullptr && work->in_hand_ == &inst ? work : nullptr;
  }

  // Does the same for the instance in hand.
  void take_over(BX_INSTANCE& inst) {
    inst.release_names(names_);
    if (nesting_ < most_nesting || !note_children(inst)) destroy_children(inst);
  }

 private:
  // A level takes a few hundred bytes of stack, and what the client's destructor needs.
  static constexpr int most_nesting = 256;

  // False when there is no memory for it.
  bool note_children(BX_INSTANCE& inst) {
    try {
      left_.insert(left_.end(), inst.instances.begin(), inst.instances.end());
    } catch (const std::bad_alloc&) {
      return false;
    }
    inst.instances.empty();
    return true;
  }

  void destroy(BX_INSTANCE* inst) {
    if (inst == nullptr) return;
    if (bx_is_derived(*inst)) {
      destroy_derived(inst);
      return;
    }
    if (BX_DB::MPAR_FLOW != 0) inst->release_names(names_);
    destroy_children(*inst);
    delete_plain(inst);
  }

  // Of no derived class, so that no virtual call is needed: unloading is a tenth faster.
  static void delete_plain(BX_INSTANCE* inst) noexcept {
    inst->BX_INSTANCE::~BX_INSTANCE();
    operator delete(inst);
  }

  // The client's destructor may destroy other trees meanwhile.
  void destroy_derived(BX_INSTANCE* inst) {
    destroyer* const outer = std::exchange(at_work(), this);
    BX_INSTANCE* const outer_inst = std::exchange(in_hand_, inst);
    ++nesting_;
    delete inst;
    --nesting_;
    in_hand_ = outer_inst;
    at_work() = outer;
  }

  // Deletes the subtree below an instance, leaves first. The way back up is kept in the tree itself: the place of the
  // child that is being visited holds the parent of its owner meanwhile. So neither stack nor memory is needed,
  // whatever the depth.
  void destroy_children(BX_INSTANCE& root) {
    BX_INSTANCE* parent = nullptr;
    BX_INSTANCE* current = &root;
    for (;;) {
      const bx_long count = current->instances.getcount();
      if (count == 0) {
        if (current == &root) return;
        BX_INSTANCE* done = current;
        current = parent;
        parent = current->instances[current->instances.getcount() - 1];
        current->instances.a_droplast();
        delete_plain(done);
        continue;
      }
      BX_INSTANCE*& place = current->instances[count - 1];
      BX_INSTANCE* child = place;
      constexpr bx_long ahead = 4;
      if (count > ahead) bx_fetch(current->instances[count - 1 - ahead]);
      const bool is_plain = child != nullptr && !bx_is_derived(*child);
      if (is_plain && child->instances.getcount() != 0) {
        if (BX_DB::MPAR_FLOW != 0) child->release_names(names_);
        place = parent;
        parent = current;
        current = child;
        continue;
      }
      if (is_plain) {
        if (BX_DB::MPAR_FLOW != 0) child->release_names(names_);
        delete_plain(child);
      } else if (child != nullptr) {
        destroy_derived(child);
      }
      current->instances.a_droplast();
    }
  }

  // The one that is deleting an instance of a derived class on this thread.
  static destroyer*& at_work() noexcept {
    static thread_local destroyer* work = nullptr;
    return work;
  }

  name_releaser names_;
  std::vector<BX_INSTANCE*> left_;  // to be destroyed; some are null
  BX_INSTANCE* in_hand_ = nullptr;  // being deleted
  int nesting_ = 0;                 // of derived instances that are being deleted
};

void BX_INSTANCE::destroy_subtree() { destroyer().destroy_content(*this); }

BX_INSTANCE::~BX_INSTANCE() {
  // Most have nothing left to destroy: their children are gone, and their names are the database's.
  const bool has_content = top == nullptr || BX_DB::MPAR_FLOW != 0 || instances.getcount() != 0 || has_former_names_;
  if (!has_content) return;
  if (destroyer* by = destroyer::of(*this)) {
    by->take_over(*this);
  } else {
    destroy_subtree();
  }
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
  const std::vector<char*> former = bx_take_former_names(*this);
  has_former_names_ = false;
  store_->prepare_to_keep(1 + former.size() +
                          static_cast<std::size_t>(names.getcount()));  // from here on nothing fails
  for (char* former_name : former) store_->keep(former_name);
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
  delete store_;  // frees the strings of the table, too
}
