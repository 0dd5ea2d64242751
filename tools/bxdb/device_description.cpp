// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "device_description.h"

#include <initializer_list>
#include <string_view>

namespace bxdb {
namespace {

void drop_one_of(std::string_view& name, std::initializer_list<std::string_view> endings) {
  for (const std::string_view end : endings) {
    if (!name.ends_with(end)) continue;
    name.remove_suffix(end.size());
    return;
  }
}

}  // namespace

std::string description_beside(const std::string& file) {
  std::string_view stem = file;
  drop_one_of(stem, {".gz", ".zst"});
  drop_one_of(stem, {".bxd", ".bxg"});
  return std::string(stem) + ".npd";
}

}  // namespace bxdb
