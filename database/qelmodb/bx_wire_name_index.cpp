// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_wire_name_index.h"

#include <cstdlib>
#include <unordered_map>

namespace {

// Never destroyed: databases among the static objects of a client still withdraw their names while the process
// ends.
std::unordered_map<const void*, int>& numbers() {
  static auto* const index = new std::unordered_map<const void*, int>;
  return *index;
}

}  // namespace

int bx_wire_name_number(const char* name) noexcept {
  const auto found = numbers().find(name);
  return found != numbers().end() ? found->second : bx_no_wire_number;
}

void bx_set_wire_name_number(const char* name, int number) { numbers()[name] = number; }

void bx_free_name(char* name) noexcept {
  if (!numbers().empty()) numbers().erase(name);
  std::free(name);
}
