// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The constants of exported classes. A client of a DLL asks it for a constant whose address it takes (a reference is
// enough), and the compiler leaves those out of the DLL that nothing in it needs.
#include "bx_basic_ass_template.h"
#include "np_device.h"
#include "qelmoindex.h"

extern const void* const bx_exported_constants[];
const void* const bx_exported_constants[] = {&NP_TABLEDEVICE::max_lines, &BASIC_ASS_TEMPLATE::most_ins_points,
                                             &qelmodb::tree_index::no_number};
