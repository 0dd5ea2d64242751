// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_db.h"

#include <memory>
#include <new>

#include "bx_access.h"
#include "bx_grid.h"
#include "ut_arith.h"

bx_long BX_DB::MPAR_FLOW = 0;

namespace {

std::unique_ptr<bx_name_store> store_with(DARRAY_NAME& table, char* name) {
  auto store = std::make_unique<bx_name_store>(table);
  store->keep(name);
  return store;
}

}  // namespace

BX_DB::BX_DB() : BX_DB(nullptr, 0, 0, 0, 0) {
  numinst = 0;
  numbasicass = 0;
}

BX_DB::BX_DB(const char* db_name, bx_long x1, bx_long y1, bx_long x2, bx_long y2)
    : BX_INSTANCE(db_name, x1, y1, x2, y2),
      names(0),
      grid(nullptr),
      device(nullptr),
      basicasstemplate(nullptr),
      store_(store_with(names, name).release()) {
  top = this;
}

// Reported, and ended, by the copies of the instance part and of the name table.
BX_DB::BX_DB(const BX_DB& other)
    : BX_INSTANCE(other),
      names(other.names),
      grid(nullptr),
      device(other.device),
      basicasstemplate(nullptr),
      numinst(other.numinst),
      numbasicass(other.numbasicass),
      store_(new bx_name_store(names)) {
  top = this;
}

BX_DB& BX_DB::operator=(const BX_DB& other) {
  BX_INSTANCE::operator=(other);
  names = other.names;
  grid = other.grid;
  device = other.device;
  if (this != &other) asstemplates = other.asstemplates;
  basicasstemplate = other.basicasstemplate;
  numinst = other.numinst;
  numbasicass = other.numbasicass;
  store_->invalidate();
  return *this;
}

BX_GRID* BX_DB::getgrid(const char** prefixes) {
  try {
    if (grid == nullptr) grid = new BX_GRID(this, prefixes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return grid;
}

char* BX_DB::getcachedname(const char* s) { return s != nullptr ? store_->intern(s) : nullptr; }

void BX_DB::count_inst() noexcept { numinst = ut_wrap_add(numinst, 1); }

void BX_DB::count_basic_ass() noexcept { numbasicass = ut_wrap_add(numbasicass, 1); }
