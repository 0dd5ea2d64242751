// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_template_records.h"

#include "bx_template_coders.h"

bool bx_template_reader::wire_lists(BASIC_ASS_TEMPLATE& set) {
  set.release_wire_lists();
  const std::uint16_t stored = word();
  if (stored == 0) return true;
  std::vector<std::uint16_t> sizes(stored);
  for (std::uint16_t& size : sizes) size = word();
  set.wirelist_numwires = new std::uint16_t[stored]();
  set.wirelists = new std::uint16_t*[stored]();
  set.num_wirelist = stored;
  for (int k = 0; k < stored && file_.ok(); ++k) {
    const std::uint16_t size = sizes[static_cast<std::size_t>(k)];
    set.wirelists[k] = new std::uint16_t[size]();
    set.wirelist_numwires[k] = size;
    for (int j = 0; j < size && file_.ok(); ++j) set.wirelists[k][j] = word();
  }
  return true;
}

unsigned char ASS_TEMPLATE::writeme(UT_PTRFILE* file) const {
  bx_template_writer writer(*file);
  return bx_describe_layout(writer, *this) ? 1 : 0;
}

unsigned char ASS_TEMPLATE::readme(UT_PTRFILE* file) {
  bx_template_reader reader(*file);
  return bx_describe_layout(reader, *this) ? 1 : 0;
}

unsigned char WIRE_TEMPLATE_SM::writeme(UT_PTRFILE* file) const {
  bx_template_writer writer(*file);
  return bx_describe_wire_template(writer, *this) ? 1 : 0;
}

unsigned char WIRE_TEMPLATE_SM::readme(UT_PTRFILE* file) {
  bx_template_reader reader(*file);
  return bx_describe_wire_template(reader, *this) ? 1 : 0;
}

unsigned char BASIC_ASS_TEMPLATE::writeme_sm(UT_PTRFILE* file) const {
  bx_template_writer writer(*file);
  return bx_describe_matrix_set(writer, *this) ? 1 : 0;
}

unsigned char BASIC_ASS_TEMPLATE::readme_sm(UT_PTRFILE* file) {
  release_corners();
  bx_template_reader reader(*file);
  return bx_describe_matrix_set(reader, *this) ? 1 : 0;
}
