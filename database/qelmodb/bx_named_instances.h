// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// All instances of a name.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "bx_instance.h"
#include "bx_text_table.h"
#include "ut_large_vector.h"

class bx_named_instances {
 public:
  /// Sorts instances by name; those of one name keep their order.
  explicit bx_named_instances(std::span<BX_INSTANCE* const> instances);

  /// Those of this name. name is not null.
  std::span<BX_INSTANCE* const> find(const char* name) const noexcept;

  std::size_t memory() const noexcept;

 private:
  class numbering;

  UT_LARGE_VECTOR<BX_INSTANCE*> sorted_;
  std::vector<std::uint32_t> begins_;  // in sorted_, of each name, and the end of the last
  bx_text_table numbers_;
};
