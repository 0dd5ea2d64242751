// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <memory>

#include "commands.h"
#include "compressing.h"
#include "device_description.h"
#include "failure.h"
#include "loaded_database.h"
#include "loss_proof.h"
#include "output_file.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

/// Says what the form cannot hold; true when there is nothing.
bool fits(const loaded_database& loaded, qelmodb::form as, const convert_options& options) {
  constexpr std::size_t most_shown = 100;
  const auto objections = qelmodb::dump_objections(*loaded.db, as, loaded.what, most_shown);
  for (const qelmodb::objection& objection : objections) {
    fmt::print(stderr, "bxdb: {}: {}: {}\n", printable(options.in), printable(objection.path),
               printable(objection.reason));
  }
  if (objections.empty()) return true;
  fmt::print(stderr, "bxdb: {}: not written: {}{} cannot be held by a {} {} file\n", printable(options.out),
             objections.size() == most_shown ? "at least " : "",
             counted(static_cast<std::int64_t>(objections.size()), "name"), qelmodb::to_string(as),
             qelmodb::to_string(loaded.what));
  return false;
}

/// Compresses what was loaded, and says what would not come back of it; true when the file is to be written. What a
/// compressed file held comes back with the templates that it held.
bool compressed(const loaded_database& loaded, const convert_options& options, qelmodb::compression_losses& losses) {
  if (loaded.report.file_form == qelmodb::form::compressed) return true;
  if (!compress_database(*loaded.db, options.in, options.out + ": not written")) return false;
  losses = losses_of(*loaded.db, options.in);
  report_losses(losses, options.in);
  if (losses.total() == 0 || options.allow_loss) return true;
  fmt::print(stderr, "bxdb: {}: not written: it would not give everything back; see --allow-loss\n",
             printable(options.out));
  return false;
}

/// The bytes that are to stand in the output, packed.
std::string finished_bytes(const loaded_database& loaded, qelmodb::form as, packing how, const std::string& out) {
  progress shown("writing " + out);
  UT_MEMFILE memory;
  packing_stream stream(how, memory);
  if (!qelmodb::dump(*loaded.db, stream, as, loaded.what, shown.options()) || !stream.finish()) {
    throw failure(out + ": not written: the database could not be put into this form");
  }
  return memory.bytes();
}

bool as_expected(const loaded_database& loaded, const BX_DB& back, const qelmodb::compression_losses& losses) {
  return losses.total() == 0 ? qelmodb::same_tree(*loaded.db, back, loaded.what)
                             : comes_back_as_announced(*loaded.db, back, losses);
}

/// Reads the bytes as if they came from the file and compares the result with what they were made of.
void verify(const std::string& bytes, packing how, const loaded_database& loaded, const convert_options& options,
            const qelmodb::compression_losses& losses) {
  progress shown("reading back " + options.out);
  UT_MEMFILE file(unpack(bytes, how, options.out, bytes.max_size() / 2));
  const auto back = std::make_unique<BX_DB>();
  back->setseparator('$');
  if (!qelmodb::load(*back, file, loaded.what, shown.options()) || !as_expected(loaded, *back, losses)) {
    throw failure(options.out + ": not written: reading it back does not give what " + options.in + " holds");
  }
}

void check_names(const loaded_database& loaded, qelmodb::form as, const convert_options& options) {
  if (as == qelmodb::form::compressed) check_compressible(loaded);
  if (loaded.what == qelmodb::content::grid || !is_grid_name(options.out)) return;
  throw failure(options.out + ": the name is one of a grid file, but " + options.in + " holds a database with wires");
}

}  // namespace

int run_convert(const convert_options& options) {
  const qelmodb::form as = form_named(options.form);
  const loaded_database loaded = load_database(options.in, options.input);
  check_names(loaded, as, options);
  qelmodb::compression_losses losses;
  if (as == qelmodb::form::compressed ? !compressed(loaded, options, losses) : !fits(loaded, as, options)) return no;
  const packing how = packing_for(options.out);
  const std::string bytes = finished_bytes(loaded, as, how, options.out);
  verify(bytes, how, loaded, options, losses);
  output_file out(options.out, packing::none);
  write_all(out.stream(), bytes.data(), bytes.size());
  out.commit();
  take_description_along(options.in, options.out);
  return done;
}

}  // namespace bxdb
