// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <vector>

#include "qelmoindex.h"
#include "text.h"

namespace bxdb {

/// The paths of instances that an index finds. Instances in the order of the walk share most of their paths; only what
/// differs from the path before is looked up.
class index_paths {
 public:
  explicit index_paths(const qelmodb::tree_index& index) : index_(index) {}

  /// The names from the root down to an instance of the index, as path_names shows them.
  std::string of(const BX_INSTANCE& inst);

 private:
  bool is_on_path(const BX_INSTANCE& inst) const noexcept;
  void enter(const BX_INSTANCE& inst);

  const qelmodb::tree_index& index_;
  std::vector<const BX_INSTANCE*> path_;
  path_names names_;
};

}  // namespace bxdb
