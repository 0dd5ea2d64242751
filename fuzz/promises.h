// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What is promised of files and of compressing, as demands on any bytes and any tree.
#pragma once

#include "fuzzing.h"
#include "qelmocompress.h"

namespace fuzz {

/// A check within the size that is tried.
inline qelmodb::check_report checked(std::string_view bytes, qelmodb::content what) {
  // Inputs may ask for trees far larger than they are.
  qelmodb::check_options options;
  options.within.memory = std::int64_t{1} << 20;
  return qelmodb::check_bytes(bytes, what, options);
}

/// Whatever a client does with a tree that was loaded.
inline void use(BX_DB& db, const qelmodb::check_report& report, qelmodb::content what) {
  const qelmodb::tree_size size = qelmodb::measure(db);
  FUZZ_REQUIRE(size.instances == report.instances);
  if (what == qelmodb::content::database) FUZZ_REQUIRE(size.wires == report.wires);
  qelmodb::instances_at(db, 0, 0);
  qelmodb::find_wires(db, "A");
  db.printme(0);
  for (const auto as : {qelmodb::form::text, qelmodb::form::binary}) require_round_trip(db, as, what);
  std::string why;
  static const char* const prefixes[] = {"T", "L", nullptr};
  qelmodb::make_grid(db, prefixes, qelmodb::tiles::with_or_without_wires, why);
}

/// What the checker finds loadable gives true and what the report counted, and is safe to use; anything else gives
/// true, false or a documented end of the process.
inline void require_load_as_checked(const std::string& bytes, qelmodb::content what) {
  const qelmodb::check_report report = checked(bytes, what);
  if (report.limit != nullptr) return;
  BX_DB db;
  db.setseparator('$');
  bool good = false;
  const bool ended = ends_process([&] { good = loaded(db, bytes, what); });
  if (!report.loadable()) return;
  FUZZ_REQUIRE(!ended);
  FUZZ_REQUIRE(good);
  FUZZ_REQUIRE(!ends_process([&] { use(db, report, what); }));
}

/// Compresses, writes, loads and compares: compressing ends the process when it was said to, and what comes back
/// differs only when that was said. The bytes of the file; empty when there is none.
inline std::string require_compressed_as_told(BX_DB& db) {
  qelmodb::intern_root_name(db);
  const bool objected = !qelmodb::compression_objections(db, 1).empty();
  FUZZ_REQUIRE(ends_process([&] { db.compress(); }) == objected);
  if (objected) return {};
  const auto form = qelmodb::form::compressed;
  const bool holds_all = qelmodb::dump_objections(db, form, qelmodb::content::database, 1).empty();
  FUZZ_REQUIRE(!holds_all || qelmodb::find_compression_losses(db, 1).total() == 0);
  std::string bytes = dumped(db, form, qelmodb::content::database);
  const qelmodb::check_report report = qelmodb::check_bytes(bytes, qelmodb::content::database);
  BX_DB back;
  back.setseparator('$');
  const bool good = loaded(back, bytes, qelmodb::content::database);
  if (!holds_all) return bytes;
  FUZZ_REQUIRE(report.loadable());
  FUZZ_REQUIRE(good);
  FUZZ_REQUIRE(qelmodb::same_tree(db, back, qelmodb::content::database));
  return bytes;
}

}  // namespace fuzz
