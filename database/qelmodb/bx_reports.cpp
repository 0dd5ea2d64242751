// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_reports.h"

#include "bx_walk.h"
#include "ut_msgman.h"
#include "ut_string.h"

namespace {

constexpr bx_long indent_step = 3;

void indent(bx_long level) {
  for (bx_long i = 0; i < level; ++i) ut_msgman->msgprint(" ");
}

void print_title(const char* title, bx_long level) {
  indent(level);
  ut_msgman->msgprint(title);
}

}  // namespace

void bx_print_wire(const BX_WIRE& wire, bx_long level) {
  indent(level);
  ut_msgman->msgprint(neoform("BX_WIRE: \"%s\"; Node location:", ut_text(wire.name)));
  ut_msgman->msgprint(neoform("(%d, %d)", wire.nodex, wire.nodey));
  ut_msgman->msgprint("\n");
}

void bx_print_tree(const BX_INSTANCE& root, bx_long level, bool with_wires) {
  bx_walk(root, [&](const BX_INSTANCE& inst, bx_long depth) {
    const bx_long here = level + depth * indent_step;
    indent(here);
    ut_msgman->msgprint(neoform("BX_INSTANCE: \"%s\"; Extrema:", ut_text(inst.name)));
    ut_msgman->msgprint(neoform("(%d, %d), (%d, %d)", inst.xmin, inst.ymin, inst.xmax, inst.ymax));
    ut_msgman->msgprint("\n");
    if (with_wires) {
      print_title("WIRES:\n", here);
      for (const BX_WIRE& wire : inst.wires) bx_print_wire(wire, here + indent_step);
    }
    print_title("INSTANCES:\n", here);
    return true;
  });
}
