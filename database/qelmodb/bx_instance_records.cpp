// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_former_names.h"
#include "bx_record_readers.h"
#include "bx_record_writers.h"
#include "bx_reports.h"

unsigned char BX_INSTANCE::writeme(UT_PTRFILE* file) const {
  bx_binary_writer writer(*file);
  return bx_write_tree(writer, *this, true) ? 1 : 0;
}

unsigned char BX_INSTANCE::readme(UT_PTRFILE* file) {
  give_up_name();
  bx_binary_reader reader(*file);
  return bx_read_tree(reader, *this, true) ? 1 : 0;
}

unsigned char BX_INSTANCE::writeme(UT_STREAM* file) const {
  bx_text_writer writer(*file);
  return bx_write_tree(writer, *this, true) ? 1 : 0;
}

unsigned char BX_INSTANCE::readme(UT_STREAM* file) {
  give_up_name();
  bx_text_reader reader(*file, nullptr, top);
  return bx_read_tree(reader, *this, true) ? 1 : 0;
}

void BX_INSTANCE::printme(int level) const { bx_print_tree(*this, level, true); }

// A reader is about to store another name. A standalone instance owns the one it has; any other belongs to its
// database.
void BX_INSTANCE::give_up_name() {
  if (top == nullptr && !nameborrowed && name != nullptr) {
    bx_keep_former_name(*this, name);
    has_former_names_ = true;
  }
  name = nullptr;
}
