// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Tiles put down just as a test says: no column instances, no sorting, no widening of the parent.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "qelmoext.h"

namespace test {

inline BX_INSTANCE* put_block(BX_INSTANCE& parent, const char* name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
  auto block = std::make_unique<BX_INSTANCE>(name, x1, y1, x2, y2);
  BX_INSTANCE* inst = block.get();
  parent.instances.a_add(&inst);
  return block.release();
}

inline BX_INSTANCE* put_tile(BX_INSTANCE& parent, const char* name, bx_long x1, bx_long y1, bx_long x2, bx_long y2) {
  BX_INSTANCE* tile = put_block(parent, name, x1, y1, x2, y2);
  const BX_WIRE wire("W", x1, y1);
  tile->addwire(&wire);
  return tile;
}

/// All names begin with this.
inline const char* every_tile[] = {"", nullptr};

/// "A B|C -": the names in a cell joined by "+", cells by a blank, rows by "|", "-" for an empty cell.
inline std::string cells_of(const BX_GRID& grid) {
  std::string text;
  for (short row = 0; row < grid.getnumrows(); ++row) {
    if (row > 0) text += "|";
    for (short column = 0; column < grid.getnumcols(); ++column) {
      if (column > 0) text += " ";
      const DARRAY_BX_INSTPTR* list = grid.getinstances(row, column);
      if (list == nullptr) {
        text += "-";
        continue;
      }
      for (bx_long i = 0; i < list->getcount(); ++i) {
        if (i > 0) text += "+";
        text += ut_text((*list)[i]->name);
      }
    }
  }
  return text;
}

/// A device whose lines are all equally wide, and that remembers whether it was asked.
class even_device : public NP_DEVICE {
 public:
  even_device(bx_long rows, bx_long columns, bx_long pitch) : rows_(rows), columns_(columns), pitch_(pitch) {}

  bx_long maxrow() override { return rows_ - 1; }
  bx_long maxcol() override { return columns_ - 1; }
  bx_long rowof(const UT_POINT& point) override {
    points.push_back(point);
    return line(point.y);
  }
  bx_long colof(const UT_POINT& point) override { return line(point.x); }

  std::vector<UT_POINT> points;  ///< whose rows were asked for

 private:
  bx_long line(bx_long at) const { return at >= 0 ? at / pitch_ : -1 - (-1 - at) / pitch_; }

  bx_long rows_;
  bx_long columns_;
  bx_long pitch_;
};

}  // namespace test
