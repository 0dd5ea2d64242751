// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Trees whose instances are of classes that clients derived.
#pragma once

#include <typeinfo>

#include "bx_instance.h"

/// Whether virtual operations of the instance may be a client's. Those of plain instances are carried out by a walk
/// over the tree, so that depth needs no stack.
inline bool bx_is_derived(const BX_INSTANCE& inst) noexcept {
  // Mostly there is one description of a type, and its address tells.
  return &typeid(inst) != &typeid(BX_INSTANCE) && typeid(inst) != typeid(BX_INSTANCE);
}
