// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_template_index.h"

#include "bx_access.h"
#include "bx_order.h"
#include "bx_template_faults.h"
#include "ut_arith.h"
#include "ut_string.h"

namespace {

// The two things that are compared, seen alike.
struct template_view {
  const ASS_TEMPLATE& tmplt;
  bx_long count() const noexcept { return tmplt.numwires; }
  const char* name() const noexcept { return tmplt.name; }
  BX_POINT node(bx_long k) const noexcept { return {tmplt.wires[k].nodex, tmplt.wires[k].nodey}; }
};

struct instance_view {
  const BX_INSTANCE& inst;
  bx_long count() const noexcept { return inst.getnumwires(); }
  const char* name() const noexcept { return inst.name; }
  BX_POINT node(bx_long k) const noexcept {
    return {ut_wrap_sub(inst.wires[k].nodex, inst.xmin), ut_wrap_sub(inst.wires[k].nodey, inst.ymin)};
  }
};

template <class A, class B>
bool before(const A& a, const B& b) {
  if (a.count() != b.count()) return a.count() < b.count();
  if (const int names = bx_compare_names(a.name(), b.name()); names != 0) return names < 0;
  for (bx_long k = 0; k < a.count(); ++k) {
    const BX_POINT p = a.node(k);
    const BX_POINT q = b.node(k);
    if (p.x != q.x) return p.x < q.x;
    if (p.y != q.y) return p.y < q.y;
  }
  return false;
}

}  // namespace

bool bx_template_index::order::operator()(const ASS_TEMPLATE* a, const ASS_TEMPLATE* b) const {
  return before(template_view{*a}, template_view{*b});
}

bool bx_template_index::order::operator()(const ASS_TEMPLATE* a, const BX_INSTANCE& b) const {
  return before(template_view{*a}, instance_view{b});
}

bool bx_template_index::order::operator()(const BX_INSTANCE& a, const ASS_TEMPLATE* b) const {
  return before(instance_view{a}, template_view{*b});
}

int bx_template_index::find(const BX_INSTANCE& inst) {
  for (; known_ < templates_.size(); ++known_) numbers_.emplace(templates_[known_], static_cast<int>(known_));
  const auto found = numbers_.find(inst);
  return found != numbers_.end() ? found->second : -1;
}

int bx_text_numbers::of(const char* text) {
  const auto known = by_address_.find(text);
  if (known != by_address_.end()) return known->second;
  const int number = by_text_.emplace(ut_text(text), static_cast<int>(by_text_.size())).first->second;
  by_address_.emplace(text, number);
  return number;
}

namespace {

std::vector<const char*> template_names_of(const BASIC_ASS_TEMPLATE& set) {
  std::vector<const char*> names;
  names.reserve(set.num_wire_template);
  for (int i = 0; i < set.num_wire_template; ++i) names.push_back(set.wire_templates[i].name);
  return names;
}

}  // namespace

bx_wire_list_index::bx_wire_list_index(const BASIC_ASS_TEMPLATE& set)
    : bx_wire_list_index(set, template_names_of(set)) {}

bx_wire_list_index::bx_wire_list_index(const BASIC_ASS_TEMPLATE& set, std::vector<const char*> template_names)
    : template_names_(std::move(template_names)) {
  for (int list = 0; list < set.num_wirelist; ++list) {
    add(bx_wire_list(set.wirelists[list], set.wirelists[list] + set.wirelist_numwires[list]));
  }
}

int bx_wire_list_index::find(const BX_INSTANCE& inst) {
  if (static_cast<std::size_t>(inst.getnumwires()) > bx_most_list_wires) return count_;
  const std::uint32_t strings = strings_.number_of(inst).number;
  if (strings == bx_name_lists::none) return find_texts(inst);
  if (strings >= found_.size()) found_.resize(strings + 1, none);
  if (found_[strings] == none) {
    const int found = find_texts(inst);
    if (found == count_) return count_;
    found_[strings] = found;
  }
  return found_[strings];
}

int bx_wire_list_index::find_texts(const BX_INSTANCE& inst) {
  key_.clear();
  for (const BX_WIRE& wire : inst.wires) key_.push_back(texts_.of(wire.name));
  const auto found = numbers_.find(key_);
  return found != numbers_.end() ? found->second : count_;
}

// Not under the names of the instance that it is made for: where an earlier build has left a number for one of them,
// the list refers to another template, and only that one's name counts when lists are compared.
void bx_wire_list_index::add(const bx_wire_list& list) {
  const int number = count_++;
  key_.clear();
  for (const std::uint16_t wire : list) {
    if (wire >= template_names_.size()) return;
    key_.push_back(texts_.of(template_names_[wire]));
  }
  numbers_.emplace(key_, number);
}

bx_compression_aids::bx_compression_aids(BX_DB& db)
    : templates(db.get_non_basic_ass_tmpvec()), wire_lists(*db.basicasstemplate), db_(db) {
  bx_access::names(db).aids = this;
}

bx_compression_aids::~bx_compression_aids() { bx_access::names(db_).aids = nullptr; }
