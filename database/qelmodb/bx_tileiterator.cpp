// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_tileiterator.h"

#include <vector>

// The descendants of one instance that are still to come. The way down is kept here, not on the stack:
// a file decides how deep a tree is.
class BX_TILEITERATOR::subtree {
 public:
  explicit subtree(BX_INSTANCE& root) : path_{{&root, 0}} {}

  /// Null when all were given.
  BX_INSTANCE* next() {
    while (!path_.empty()) {
      place& here = path_.back();
      if (here.next >= here.inst->getnuminstances()) {
        BX_INSTANCE* done = here.inst;
        path_.pop_back();
        return path_.empty() ? nullptr : done;
      }
      BX_INSTANCE* child = here.inst->instances[here.next++];
      if (child == nullptr) continue;
      if (child->getnuminstances() == 0) return child;
      path_.push_back({child, 0});
    }
    return nullptr;
  }

 private:
  struct place {
    BX_INSTANCE* inst;
    bx_long next;
  };
  std::vector<place> path_;
};

BX_TILEITERATOR::BX_TILEITERATOR(const BX_INSTANCE* inst) noexcept : root_(inst) {}

BX_TILEITERATOR::BX_TILEITERATOR(const BX_TILEITERATOR& other) noexcept = default;

BX_TILEITERATOR& BX_TILEITERATOR::operator=(const BX_TILEITERATOR& other) noexcept = default;

BX_TILEITERATOR& BX_TILEITERATOR::operator=(BX_TILEITERATOR&& other) noexcept {
  return *this = static_cast<const BX_TILEITERATOR&>(other);
}

BX_TILEITERATOR::~BX_TILEITERATOR() = default;

BX_INSTANCE* BX_TILEITERATOR::getnext() {
  while (root_ != nullptr && index_ < root_->getnuminstances()) {
    BX_INSTANCE* child = root_->instances[index_];
    if (child_ != nullptr) {
      if (BX_INSTANCE* next = child_->next(); next != nullptr) return next;
      child_.reset();
    } else if (child != nullptr && child->getnuminstances() != 0) {
      child_ = std::make_shared<subtree>(*child);
      continue;
    }
    ++index_;
    if (child != nullptr) return child;
  }
  return nullptr;
}
