// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "loaded_database.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "failure.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

/// Runs the step and returns the seconds it took.
template <class Step>
double timed(Step step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

[[noreturn]] void refuse(const std::string& name, const qelmodb::check_report& report) {
  constexpr std::ptrdiff_t most_shown = 10;
  std::ptrdiff_t shown = 0;
  for (const qelmodb::fault& fault : report.faults) {
    if (fault.level != qelmodb::severity::error || shown == most_shown) continue;
    fmt::print(stderr, "{}\n", fault_text(name, fault));
    ++shown;
  }
  if (report.limit != nullptr) throw failure(fmt::format("{}: not loaded; see --max-{}", name, report.limit));
  throw failure(fmt::format("{}: not loaded because of {}; see bxdb check", name, counted(report.errors, "error")));
}

}  // namespace

std::string fault_text(const std::string& name, const qelmodb::fault& fault) {
  return printable(fmt::format("{}: {}: {}", name, qelmodb::to_string(fault.level), fault.text()));
}

loaded_database load_database(const std::string& name, const input_options& options) {
  input_file input = read_input(name, options);
  loaded_database loaded;
  loaded.name = input.name;
  loaded.packed = input.packed;
  loaded.size_on_disk = input.size_on_disk;
  loaded.size = input.bytes.size();
  loaded.what = input.what;
  {
    progress shown("checking " + input.name);
    qelmodb::check_options check;
    check.report = shown.options().report;
    check.within = options.within;
    loaded.times.check = timed([&] { loaded.report = qelmodb::check_bytes(input.bytes, input.what, check); });
  }
  if (!loaded.report.loadable()) refuse(loaded.name, loaded.report);

  progress shown("loading " + loaded.name);
  loaded.db = std::make_unique<BX_DB>();
  loaded.db->setseparator(options.cut ? '\0' : '$');
  bool complete = false;
  loaded.times.load = timed([&] {
    UT_MEMFILE file(std::move(input.bytes));
    complete = qelmodb::load(*loaded.db, file, input.what, shown.options());
  });
  if (!complete) throw failure(loaded.name + ": not loaded, though no fault was found; is there enough memory?");
  return loaded;
}

qelmodb::tree_index index_of(const loaded_database& loaded) {
  const progress shown("indexing " + loaded.name);
  return qelmodb::tree_index(*loaded.db);
}

}  // namespace bxdb
