// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_record_readers.h"
#include "bx_record_writers.h"
#include "bx_reports.h"

unsigned char BX_INSTANCE::writegrid(UT_PTRFILE* file) const {
  bx_binary_grid_writer writer(*file);
  return bx_write_tree(writer, *this, false) ? 1 : 0;
}

unsigned char BX_INSTANCE::readgrid(UT_PTRFILE* file) {
  give_up_name();
  bx_binary_grid_reader reader(*file, top);
  return bx_read_tree(reader, *this, false) ? 1 : 0;
}

unsigned char BX_INSTANCE::writegrid(UT_STREAM* file) const {
  bx_text_writer writer(*file);
  return bx_write_tree(writer, *this, false) ? 1 : 0;
}

unsigned char BX_INSTANCE::readgrid(UT_STREAM* file) {
  give_up_name();
  bx_text_reader reader(*file, nullptr, top);
  return bx_read_tree(reader, *this, false) ? 1 : 0;
}

void BX_INSTANCE::printgrid(int level) const { bx_print_tree(*this, level, false); }
