// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Which template each instance of a tree refers to.
#include "bx_access.h"
#include "bx_order.h"
#include "bx_own_classes.h"
#include "bx_template_faults.h"
#include "bx_walk.h"
#include "qelmotmplt.h"

int BX_INSTANCE::wire_list_number() {
  BASIC_ASS_TEMPLATE* set = top->basicasstemplate;
  if (set == nullptr) {
    bx_report_missing_wire_list();
    return NO_INDEX;
  }
  bx_compression_aids* aids = bx_access::aids(*top);
  const int known = aids != nullptr ? aids->wire_lists.find(*this) : set->num_wirelist;
  return known < set->num_wirelist ? known : set->get_wire_list_idx_sm(this);
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

// What a client derived takes care of its subtree itself, by its virtual operation.
void BX_INSTANCE::compress_children() {
  bx_walk_steps(*this, [this](BX_INSTANCE& inst, bx_long /*depth*/) {
    if (&inst == this) return bx_step::into;
    if (bx_is_derived(inst)) {
      inst.compress();
      return bx_step::past;
    }
    inst.refer_to_template();
    return bx_step::into;
  });
}

void BX_INSTANCE::compress() {
  refer_to_template();
  compress_children();
}

void BX_DB::compress() {
  // A root that text loadgrid has filled belongs to no database.
  if (top == nullptr) return;
  // Until all refer to their templates there is nothing to be written, whatever ends this.
  struct undone {
    BX_DB& db;
    const bx_long instances = db.numinst;
    const bx_long matrices = db.numbasicass;
    ~undone() {
      if (!db.store_->half_compressed) return;
      db.numinst = instances;
      db.numbasicass = matrices;
    }
  } const counted{*this};
  store_->half_compressed = true;
  if (basicasstemplate == nullptr) basicasstemplate = new BASIC_ASS_TEMPLATE;
  basicasstemplate->buildme_sm(this);
  const bx_compression_aids aids(*this);
  set_non_basic_ass_tmpltidx(create_template());
  compress_children();
  store_->half_compressed = false;
}
