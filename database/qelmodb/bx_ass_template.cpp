// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Templates of instances that are no switch matrices, and which template an instance refers to.
#include "bx_ass_template.h"

#include "bx_access.h"
#include "bx_order.h"
#include "bx_template_faults.h"
#include "bx_template_index.h"
#include "ut_arith.h"

ASS_TEMPLATE::~ASS_TEMPLATE() { delete[] wires; }

void BX_INSTANCE::set_basic_ass_tmpltidx(int idx) {
  if (static_cast<unsigned>(idx) > bx_most_template_index) bx_report_template_overflow(idx);
  tmplt = static_cast<std::uint16_t>(static_cast<unsigned>(idx) | 0x8000U);
}

void BX_INSTANCE::set_non_basic_ass_tmpltidx(int idx) {
  if (static_cast<unsigned>(idx) > bx_most_template_index) bx_report_template_overflow(idx);
  tmplt = static_cast<std::uint16_t>(static_cast<unsigned>(idx));
}

namespace {

bool matches(const ASS_TEMPLATE& tmplt, const BX_INSTANCE& inst) {
  if (tmplt.getnumwires() != inst.getnumwires() || bx_compare_names(tmplt.name, inst.name) != 0) return false;
  for (bx_long k = 0; k < inst.getnumwires(); ++k) {
    const BX_WIRE& wire = inst.wires[k];
    const BX_WIRE& relative = tmplt.getwire(k);
    if (relative.nodex != ut_wrap_sub(wire.nodex, inst.xmin)) return false;
    if (relative.nodey != ut_wrap_sub(wire.nodey, inst.ymin)) return false;
  }
  return true;
}

int find_template(const std::vector<ASS_TEMPLATE*>& templates, const BX_INSTANCE& inst) {
  for (std::size_t i = 0; i < templates.size(); ++i) {
    if (matches(*templates[i], inst)) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

std::unique_ptr<ASS_TEMPLATE> bx_template_of(const BX_INSTANCE& inst) {
  auto made = std::make_unique<ASS_TEMPLATE>();
  made->name = inst.name;
  made->numwires = static_cast<unsigned short>(static_cast<bx_ulong>(inst.getnumwires()));
  made->wires = new BX_WIRE[made->numwires];
  for (int k = 0; k < made->numwires; ++k) {
    const BX_WIRE& wire = inst.wires[k];
    BX_WIRE& relative = made->wires[k];
    relative.name = wire.name;
    relative.nodex = ut_wrap_sub(wire.nodex, inst.xmin);
    relative.nodey = ut_wrap_sub(wire.nodey, inst.ymin);
    relative.nameborrowed = true;
  }
  return made;
}

int BX_INSTANCE::create_template() {
  if (top == nullptr) return -1;
  std::vector<ASS_TEMPLATE*>& templates = top->get_non_basic_ass_tmpvec();
  bx_compression_aids* aids = bx_access::aids(*top);
  const int known = aids != nullptr ? aids->templates.find(*this) : find_template(templates, *this);
  if (known >= 0) return known;
  std::unique_ptr<ASS_TEMPLATE> made = bx_template_of(*this);
  templates.push_back(made.get());
  static_cast<void>(made.release());
  return static_cast<int>(templates.size()) - 1;
}
