// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_wire_name_index.h"

#include <cstdlib>
#include <new>
#include <unordered_map>

namespace {

using name_numbers = std::unordered_map<const void*, int>;

// Never destroyed: databases among the static objects of a client still withdraw their names while the process
// ends. Nor allocated: the first to ask may be a destructor.
name_numbers& numbers() {
  alignas(name_numbers) static unsigned char storage[sizeof(name_numbers)];
  static auto* const index = new (storage) name_numbers;
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
