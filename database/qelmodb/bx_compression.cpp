// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Which template each instance of a tree refers to.
#include <typeinfo>
#include <vector>

#include "bx_access.h"
#include "bx_order.h"
#include "bx_template_faults.h"
#include "qelmotmplt.h"

namespace {

struct place {
  BX_INSTANCE* inst;
  bx_long next;
};

/// Calls visit for each descendant that is of no class of a client's own, parents first. What a client derived takes
/// care of its subtree itself, by its virtual operation.
template <class Visit, class Own>
void visit_descendants(BX_INSTANCE& root, Visit visit, Own own) {
  std::vector<place> path{{&root, 0}};
  while (!path.empty()) {
    place& here = path.back();
    if (here.next >= here.inst->getnuminstances()) {
      path.pop_back();
      continue;
    }
    BX_INSTANCE* child = here.inst->instances[here.next++];
    if (child == nullptr) continue;
    if (typeid(*child) != typeid(BX_INSTANCE)) {
      own(*child);
      continue;
    }
    visit(*child);
    path.push_back({child, 0});
  }
}

}  // namespace

int BX_INSTANCE::wire_list_number() {
  BASIC_ASS_TEMPLATE* set = top->basicasstemplate;
  if (set == nullptr) {
    bx_report_missing_wire_list();
    return NO_INDEX;
  }
  bx_compression_aids* aids = bx_access::aids(*top);
  const int known = aids != nullptr ? aids->wire_lists.find(*this) : -1;
  return known >= 0 ? known : set->get_wire_list_idx_sm(this);
}

void BX_INSTANCE::refer_to_template() {
  if (top == nullptr) return;
  top->count_inst();
  if (bx_compare_names(name, BASIC_ASS_NAME) == 0) {
    top->count_basic_ass();
    set_basic_ass_tmpltidx(wire_list_number());
  } else {
    set_non_basic_ass_tmpltidx(create_template());
  }
}

void BX_INSTANCE::compress_children() {
  visit_descendants(
      *this, [](BX_INSTANCE& inst) { inst.refer_to_template(); }, [](BX_INSTANCE& inst) { inst.compress(); });
}

void BX_INSTANCE::compress() {
  refer_to_template();
  compress_children();
}

void BX_DB::compress() {
  if (basicasstemplate == nullptr) basicasstemplate = new BASIC_ASS_TEMPLATE;
  basicasstemplate->buildme_sm(this);
  const bx_compression_aids aids(*this);
  set_non_basic_ass_tmpltidx(create_template());
  compress_children();
}

unsigned char BX_INSTANCE::writecompress(UT_PTRFILE* /*file*/) { return 0; }
unsigned char BX_INSTANCE::readcompress(UT_PTRFILE* /*file*/) { return 0; }
unsigned char BX_DB::writecompress(UT_PTRFILE* /*file*/) { return 0; }
unsigned char BX_DB::readcompress(UT_PTRFILE* /*file*/) { return 0; }
