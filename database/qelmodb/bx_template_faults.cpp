// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_template_faults.h"

#include "bx_internal_error.h"
#include "ut_string.h"

namespace {

constexpr bx_long template_code = 1;

// Faults that clients' own calls in a header could meet were always reported under that header's name.
void report_in_header(const char* detail, int line) {
  bx_internal_error(detail, {BX_TAG, "database/qelmodb/i/qelmotmplt", template_code, line});
}

void report_in_module(const char* detail, int line) {
  bx_internal_error(detail, {BX_TAG, "qelmotmplt", template_code, line});
}

}  // namespace

void bx_report_empty_range_map() { report_in_header("Trying to initiate RANGE_MAP with an empty array\n", __LINE__); }

void bx_report_out_of_range(std::uint16_t index, std::uint16_t size) {
  report_in_header(neoform("%d is out of range (%d, %d), something is wrong\n", index, 0, size - 1), __LINE__);
}

void bx_report_template_overflow(int index) {
  bx_internal_error(neoform("template index %d overflowed in BX_DB (max is %d)", index, bx_most_template_index),
                    {BX_TAG, "database/qelmodb/i/qelmodb", template_code, __LINE__});
}

void bx_report_missing_wire_template(const char* wire_name) {
  report_in_module(neoform("cannot find %s wire template\n", ut_text(wire_name)), __LINE__);
}

void bx_report_missing_wire_list() { report_in_module("cannot find wire list map for instance", __LINE__); }

void bx_report_no_basic_ass(bx_long x, bx_long y) {
  report_in_module(neoform("no BASIC_ASS at (%d, %d)", x, y), __LINE__);
}

void bx_report_beyond(const char* what, std::size_t index, std::size_t count) {
  report_in_module(neoform("%s %zu of %zu in the BASIC_ASS template", what, index, count), __LINE__);
}

void bx_report_too_many(const char* what, std::size_t count) {
  report_in_module(neoform("%zu %s in the BASIC_ASS template (max is %zu)", count, what, bx_most_in_set), __LINE__);
}
