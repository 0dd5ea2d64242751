// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Loads files of one form: what the checker finds loadable gives true and what the report counted, anything else gives
// true, false or a documented end of the process. What was loaded can be looked at, written and loaded again.
#include "fuzzing.h"

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

void use(BX_DB& db, const qelmodb::check_report& report) {
  const qelmodb::tree_size size = qelmodb::measure(db);
  FUZZ_REQUIRE(size.instances == report.instances);
  if (tested_content == qelmodb::content::database) FUZZ_REQUIRE(size.wires == report.wires);
  qelmodb::instances_at(db, 0, 0);
  qelmodb::find_wires(db, "A");
  db.printme(0);
  for (const auto as : {qelmodb::form::text, qelmodb::form::binary}) fuzz::require_round_trip(db, as, tested_content);
  std::string why;
  static const char* const prefixes[] = {"T", "L", nullptr};
  qelmodb::make_grid(db, prefixes, qelmodb::tiles::with_or_without_wires, why);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::install_manager();
  const std::string bytes = file_of(data, size);
  const qelmodb::check_report report = qelmodb::check_bytes(bytes, tested_content);
  if (!fuzz::has_sensible_tree(report)) return 0;
  BX_DB db;
  db.setseparator('$');
  bool good = false;
  const bool ended = fuzz::ends_process([&] { good = fuzz::loaded(db, bytes, tested_content); });
  if (!report.loadable()) return 0;
  FUZZ_REQUIRE(!ended);
  FUZZ_REQUIRE(good);
  FUZZ_REQUIRE(!fuzz::ends_process([&] { use(db, report); }));
  return 0;
}
