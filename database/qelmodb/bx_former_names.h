// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Names that standalone instances owned before a record gave them others. Clients may hold what getname() gave them, so
// a former name stays valid as long as its instance. Few instances ever have one: they are kept apart, in one table of
// the process, and not in a field of each of millions of instances.
//
// Any thread may call these, for instances of its own.
#pragma once

#include <vector>

class BX_INSTANCE;

/// Keeps a name of the instance. Throws std::bad_alloc, and then has not taken it.
void bx_keep_former_name(const BX_INSTANCE& inst, char* name);

/// Gives the former names of the instance, which are the caller's now.
std::vector<char*> bx_take_former_names(const BX_INSTANCE& inst) noexcept;
