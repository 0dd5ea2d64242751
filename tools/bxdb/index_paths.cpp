// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "index_paths.h"

namespace bxdb {

std::string index_paths::of(const BX_INSTANCE& inst) {
  std::vector<const BX_INSTANCE*> fresh{&inst};
  for (const BX_INSTANCE* above = index_.parent(inst); above != nullptr && !is_on_path(*above);) {
    fresh.push_back(above);
    above = index_.parent(*above);
  }
  for (; !fresh.empty(); fresh.pop_back()) enter(*fresh.back());
  return names_.text();
}

bool index_paths::is_on_path(const BX_INSTANCE& inst) const noexcept {
  const auto depth = static_cast<std::size_t>(index_.depth_of(inst));
  return depth < path_.size() && path_[depth] == &inst;
}

void index_paths::enter(const BX_INSTANCE& inst) {
  const bx_long depth = index_.depth_of(inst);
  path_.resize(static_cast<std::size_t>(depth));
  path_.push_back(&inst);
  names_.enter(inst, depth);
}

}  // namespace bxdb
