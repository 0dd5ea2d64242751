// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "compressing.h"

#include <fmt/format.h>

#include "failure.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

constexpr std::size_t most_shown = 100;

void print_at(const std::string& source, const std::string& path, const std::string& reason) {
  fmt::print(stderr, "bxdb: {}: {}: {}\n", printable(source), printable(path), printable(reason));
}

std::vector<qelmodb::objection> objections_to(const BX_DB& db, const std::string& source) {
  const progress shown("looking for obstacles in " + source);
  return qelmodb::compression_objections(db, most_shown);
}

const char* single(qelmodb::loss what) noexcept {
  switch (what) {
    case qelmodb::loss::cut_instance:
      return "instance comes back with its name cut at the first \"$\"";
    case qelmodb::loss::cut_wire:
      return "wire comes back with its name cut at the first \"$\"";
    case qelmodb::loss::renamed_wire:
      return "wire comes back with the name of the first instance of the same shape";
    case qelmodb::loss::moved_wire:
      return "wire comes back at another node";
    case qelmodb::loss::dropped_wire:
      return "wire does not come back";
  }
  return "";
}

}  // namespace

void check_compressible(const loaded_database& loaded) {
  if (loaded.what == qelmodb::content::database) return;
  throw failure(loaded.name + ": a grid file has no compressed form; it holds no wires");
}

bool compress_database(BX_DB& db, const std::string& source, const std::string& consequence) {
  qelmodb::intern_root_name(db);
  const auto objections = objections_to(db, source);
  if (!objections.empty()) {
    for (const qelmodb::objection& objection : objections) print_at(source, objection.path, objection.reason);
    fmt::print(stderr, "bxdb: {}: {}{} against compressing\n", printable(consequence),
               objections.size() == most_shown ? "at least " : "",
               counted(static_cast<std::int64_t>(objections.size()), "reason"));
    return false;
  }
  const progress shown("compressing " + source);
  db.compress();
  return true;
}

qelmodb::compression_losses losses_of(const BX_DB& db, const std::string& source) {
  const progress shown("looking for losses in " + source);
  return qelmodb::find_compression_losses(db, most_shown);
}

void report_losses(const qelmodb::compression_losses& losses, const std::string& source) {
  for (const qelmodb::compression_loss& lost : losses.described) print_at(source, lost.path, lost.reason);
  for (int kind = 0; kind < qelmodb::loss_count; ++kind) {
    const auto what = static_cast<qelmodb::loss>(kind);
    if (losses.count(what) == 0) continue;
    fmt::print(stderr, "bxdb: {}: {}\n", printable(source), counted_loss(what, losses.count(what)));
  }
}

std::string counted_loss(qelmodb::loss what, std::int64_t count) {
  return fmt::format("{} {}", count, count == 1 ? single(what) : qelmodb::to_string(what));
}

}  // namespace bxdb
