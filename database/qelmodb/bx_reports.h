// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The reports of wires and trees. Every piece of a line goes to the message manager by itself.
#pragma once

#include "bx_instance.h"

void bx_print_wire(const BX_WIRE& wire, bx_long level);
void bx_print_tree(const BX_INSTANCE& root, bx_long level, bool with_wires);
