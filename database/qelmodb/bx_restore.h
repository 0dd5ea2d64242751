// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names and wires of a tree from the templates it refers to.
#pragma once

#include "bx_instance.h"

/// False when a reference led nowhere; all others are restored all the same.
bool bx_restore_tree(BX_INSTANCE& root);
