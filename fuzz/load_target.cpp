// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loads files of one form. What was loaded is looked at, written and loaded again.
#include "promises.h"

namespace {

constexpr auto tested_form = qelmodb::form::FUZZ_FORM;
constexpr auto tested_content = qelmodb::content::FUZZ_CONTENT;

/// The input as a file of the form, whatever its first line is.
std::string file_of(const std::uint8_t* data, std::size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  const std::string line = "BX_DB:?\n";
  bytes.replace(0, line.size(), line);
  bytes[6] = "ABC"[static_cast<int>(tested_form)];
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  fuzz::require_load_as_checked(file_of(data, size), tested_content);
  return 0;
}
