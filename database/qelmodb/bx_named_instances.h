// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// All instances of a name.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "bx_instance.h"
#include "bx_text_table.h"
#include "ut_slab_vector.h"

class bx_named_instances {
 public:
  /// For about so many instances. The slabs are borrowed.
  bx_named_instances(std::size_t count, UT_SLABS& slabs);
  bx_named_instances(const bx_named_instances&) = delete;
  bx_named_instances& operator=(const bx_named_instances&) = delete;
  ~bx_named_instances();

  void add(const BX_INSTANCE& inst);

  /// Sorts the instances, which are those that were added, by name; those of one name keep their order. To be called
  /// once.
  void finish(std::span<BX_INSTANCE* const> instances);

  /// Those of this name. name is not null.
  std::span<BX_INSTANCE* const> find(const char* name) const noexcept;

  std::size_t memory() const noexcept;

 private:
  class numbering;

  UT_SLAB_VECTOR<BX_INSTANCE*> sorted_;
  std::vector<std::uint32_t> begins_;  // in sorted_, of each name, and the end of the last
  bx_text_table numbers_;
  std::unique_ptr<numbering> numbering_;  // until all are there
};
