// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Takes a database through all it can become: loaded, compressed, written, loaded and compared. Compressing ends the
// process when it was said to, and what comes back differs only when that was said.
#include "fuzzing.h"
#include "qelmocompress.h"

namespace {

void take_through(BX_DB& db) {
  qelmodb::intern_root_name(db);
  const bool objected = !qelmodb::compression_objections(db, 1).empty();
  FUZZ_REQUIRE(fuzz::ends_process([&] { db.compress(); }) == objected);
  if (objected) return;
  const std::int64_t losses = qelmodb::find_compression_losses(db, 1).total();
  std::string bytes = fuzz::dumped(db, qelmodb::form::compressed, qelmodb::content::database);
  const qelmodb::check_report report = qelmodb::check_bytes(bytes, qelmodb::content::database);
  BX_DB back;
  const bool good = fuzz::loaded(back, std::move(bytes), qelmodb::content::database);
  if (losses != 0) return;
  FUZZ_REQUIRE(report.loadable());
  FUZZ_REQUIRE(good);
  FUZZ_REQUIRE(qelmodb::same_tree(db, back, qelmodb::content::database));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  std::string bytes(reinterpret_cast<const char*>(data), size);
  const qelmodb::check_report report = qelmodb::check_bytes(bytes, qelmodb::content::database);
  if (!report.loadable() || !fuzz::has_sensible_tree(report)) return 0;
  BX_DB db;
  db.setseparator('$');
  FUZZ_REQUIRE(fuzz::loaded(db, std::move(bytes), qelmodb::content::database));
  take_through(db);
  return 0;
}
