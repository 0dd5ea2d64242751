// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "compressing.h"
#include "device_description.h"
#include "device_generator.h"
#include "failure.h"
#include "file_names.h"
#include "host.h"
#include "input_file.h"
#include "output_file.h"
#include "progress.h"
#include "replaced_file.h"
#include "text.h"

namespace bxdb {
namespace {

device_options complete(const generate_options& options) {
  device_options device = options.device;
  device.names = options.names == "unique" ? tile_names::unique : tile_names::kind;
  device.profile = options.profile == "plain" ? device_profile::plain : device_profile::device;
  return device;
}

/// What a function of the generator gives for the options. Throws failure when they give no device.
template <class Make>
auto made_of(const generate_options& options, Make make) {
  try {
    return make(complete(options));
  } catch (const std::invalid_argument& e) {
    throw failure(shown_output(options.out) + ": not written: " + e.what());
  }
}

std::unique_ptr<BX_DB> generated(const generate_options& options) {
  const progress shown("generating " + shown_output(options.out));
  return made_of(options, generate_device);
}

/// Throws failure for a device that this machine has no memory for.
void check_memory(const generate_options& options) {
  const device_size size = made_of(options, estimate_device);
  const std::uint64_t there = physical_memory();
  if (there == 0 || size.memory <= static_cast<double>(there)) return;
  constexpr double million = 1e6;
  throw failure(
      fmt::format("{}: not written: the device would have about {:.0f} million instances and {:.0f} million wires, "
                  "which take {} of "
                  "memory, and this machine has {}; ask for fewer columns, rows or wires",
                  shown_output(options.out), size.instances / million, size.wires / million,
                  size_text(static_cast<std::uint64_t>(size.memory)), size_text(there)));
}

/// The description of the device; null when it has too many rows or columns for one.
std::unique_ptr<NP_TABLEDEVICE> description_of(const generate_options& options) {
  device_edges edges = edges_of_device(complete(options));
  constexpr std::size_t most_edges = NP_TABLEDEVICE::max_lines + 1;
  if (edges.rows.size() > most_edges || edges.columns.size() > most_edges) return nullptr;
  return std::make_unique<NP_TABLEDEVICE>(std::move(edges.rows), std::move(edges.columns));
}

/// Throws failure when anything would be replaced that is not of the kind that is written, or that nobody named.
void check_places(const generate_options& options, qelmodb::content what) {
  const std::string place = description_place(options.out);
  refuse_same_outputs(options.out, place);
  const bool is_file = will_be_described(options.out);
  const std::unique_ptr<NP_TABLEDEVICE> description = is_file ? description_of(options) : nullptr;
  if (!options.force) {
    refuse_to_replace_stranger(options.out, what);
    if (description) refuse_to_replace(place, *description);
  }
  if (description) refuse_stream(place);
}

/// Writes the description of the device beside the database, for grids.
void describe(const generate_options& options) {
  if (is_standard_stream(options.out) || !is_described(options.out)) return;
  const std::string name = description_place(options.out);
  const std::unique_ptr<NP_TABLEDEVICE> description = description_of(options);
  if (!description) {
    std::error_code unknown;
    fmt::print(stderr, "bxdb: {}: not written: a description holds at most {} rows and columns{}\n", printable(name),
               NP_TABLEDEVICE::max_lines,
               std::filesystem::exists(path_of(name), unknown) ? "; the one that is there is of another device" : "");
    return;
  }
  std::string why;
  if (!description->write(name.c_str(), why)) throw failure(why);
}

/// False when the device cannot be compressed, or would not come back; standard error says why.
bool compressed(BX_DB& db, const std::string& out) {
  if (!compress_database(db, out, out + ": not written")) return false;
  const qelmodb::compression_losses losses = losses_of(db, out);
  report_losses(losses, out);
  return losses.total() == 0;
}

}  // namespace

int run_generate(const generate_options& options) {
  const auto what = is_grid_name(options.out) ? qelmodb::content::grid : qelmodb::content::database;
  const qelmodb::form as = form_named(options.form);
  if (as == qelmodb::form::compressed && what == qelmodb::content::grid) {
    throw failure(options.out + ": not written: the name is one of a grid file, which has no compressed form");
  }
  check_memory(options);
  if (!is_standard_stream(options.out)) check_places(options, what);
  const std::unique_ptr<BX_DB> db = generated(options);
  if (as == qelmodb::form::compressed && !compressed(*db, shown_output(options.out))) return no;
  const progress shown("writing " + shown_output(options.out));
  output_file out(options.out, packing_for(options.out));
  if (!qelmodb::dump(*db, out.stream(), as, what)) out.stream().fail();
  out.commit();
  describe(options);
  return done;
}

}  // namespace bxdb
