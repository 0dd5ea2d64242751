// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The virtual operations of template compression. Their places in the class are fixed, so that clients
// need not be rebuilt when a later version fills them; this version has no templates and says so.
#include "bx_db.h"
#include "bx_internal_error.h"

namespace {

void report_missing() {
  bx_internal_error("template compression is not part of this version", {BX_TAG, "qelmodb", 1, __LINE__});
}

}  // namespace

void BX_INSTANCE::compress() { report_missing(); }
unsigned char BX_INSTANCE::writecompress(UT_PTRFILE* /*file*/) { return 0; }
unsigned char BX_INSTANCE::readcompress(UT_PTRFILE* /*file*/) { return 0; }

void BX_DB::compress() { report_missing(); }
unsigned char BX_DB::writecompress(UT_PTRFILE* /*file*/) { return 0; }
unsigned char BX_DB::readcompress(UT_PTRFILE* /*file*/) { return 0; }
