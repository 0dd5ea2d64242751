// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Takes a database through all it can become: loaded, compressed, written, loaded and compared.
#include "promises.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if (!fuzz::checked(bytes, qelmodb::content::database).loadable()) return 0;
  BX_DB db;
  db.setseparator('$');
  FUZZ_REQUIRE(fuzz::loaded(db, std::move(bytes), qelmodb::content::database));
  fuzz::require_compressed_as_told(db);
  return 0;
}
