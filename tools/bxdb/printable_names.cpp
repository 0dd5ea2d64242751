// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "printable_names.h"

#include "bx_walk.h"
#include "text.h"

namespace bxdb {

printable_names::printable_names(BX_DB& db, of which) : db_(db), which_(which) {
  visit_names([this](char*& name) { name = shown_for(name); });
}

printable_names::~printable_names() {
  if (originals_.empty()) return;
  visit_names([this](char*& name) {
    if (const auto original = originals_.find(name); original != originals_.end()) name = original->second;
  });
}

/// Names are shared: each is looked at once.
char* printable_names::shown_for(char* name) {
  if (name == nullptr) return nullptr;
  const auto [place, is_new] = shown_.try_emplace(name, name);
  if (!is_new) return place->second;
  std::string text = printable(name);
  if (text == name) return name;
  texts_.push_back(std::move(text));
  place->second = texts_.back().data();
  originals_[place->second] = name;
  return place->second;
}

template <class Exchange>
void printable_names::visit_names(Exchange exchange) {
  bx_walk(static_cast<BX_INSTANCE&>(db_), [this, &exchange](BX_INSTANCE& inst, bx_long) {
    exchange(inst.name);
    if (which_ == of::instances) return true;
    for (BX_WIRE& wire : inst.wires) exchange(wire.name);
    return true;
  });
}

}  // namespace bxdb
