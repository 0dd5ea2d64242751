// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_grid.h"

#include <cstdlib>

#include "bx_grid_builder.h"
#include "bx_internal_error.h"
#include "ut_string.h"

namespace {

constexpr char grid_module[] = "qelmodb";
constexpr bx_long construction_code = 20;
constexpr bx_long query_code = 1;

void report(const bx_grid_problem& problem) {
  switch (problem.kind) {
    case bx_grid_problem::none:
      return;
    case bx_grid_problem::no_rows:
      bx_internal_error("BX_GRID creation encountered a problem with the BX_INSTANCES.",
                        {grid_module, grid_module, construction_code, __LINE__});
      return;
    case bx_grid_problem::no_device:
      bx_internal_error("BX_GRID cannot get the device", {grid_module, grid_module, construction_code, __LINE__});
      return;
    case bx_grid_problem::out_of_paper:
      bx_internal_error(problem.detail.c_str(), {BX_TAG, grid_module, construction_code, __LINE__});
      return;
  }
}

}  // namespace

BX_GRID::BX_GRID(BX_DB* db, const char* const* names) { report(bx_grid_builder(*db, names, true).build(*this)); }

BX_GRID& BX_GRID::operator=(const BX_GRID& other) noexcept = default;

BX_GRID::~BX_GRID() {
  if (cells_ == nullptr) return;
  for (short row = 0; row < rows_; ++row) std::free(cells_[row]);
  std::free(cells_);
}

bool BX_GRID::qualifies(BX_INSTANCE* const inst, const char* const* names) {
  return inst->wires.getcount() != 0 && bx_is_tile(*inst, names);
}

unsigned char BX_GRID::isvalid(short row, short col) const noexcept {
  return row < rows_ && row >= 0 && col < columns_ && col >= 0 ? 1 : 0;
}

DARRAY_BX_INSTPTR* BX_GRID::getinstances(short row, short col) const {
  if (isvalid(row, col) != 0) return cells_[row][col];
  bx_internal_error(neoform("Illegal BX_GRID row (%d) or column (%d)", row, col),
                    {BX_MODULE_TOKEN, grid_module, query_code, __LINE__});
  return nullptr;
}

BX_INSTANCE* BX_GRID::getinstance(short row, short col) const {
  const DARRAY_BX_INSTPTR* list = getinstances(row, col);
  return list != nullptr && list->getcount() != 0 ? (*list)[0] : nullptr;
}
