// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_former_names.h"

#include <mutex>
#include <unordered_map>
#include <utility>

namespace {

struct former_names {
  std::mutex access;
  std::unordered_map<const BX_INSTANCE*, std::vector<char*>> by_instance;
};

// Never destroyed: instances among the static objects of a client give theirs back while the process ends.
former_names& all_former_names() {
  static former_names& all = *new former_names;
  return all;
}

}  // namespace

void bx_keep_former_name(const BX_INSTANCE& inst, char* name) {
  former_names& all = all_former_names();
  const std::lock_guard lock(all.access);
  all.by_instance[&inst].push_back(name);
}

std::vector<char*> bx_take_former_names(const BX_INSTANCE& inst) noexcept {
  former_names& all = all_former_names();
  const std::lock_guard lock(all.access);
  const auto found = all.by_instance.find(&inst);
  if (found == all.by_instance.end()) return {};
  std::vector<char*> names = std::move(found->second);
  all.by_instance.erase(found);
  return names;
}
