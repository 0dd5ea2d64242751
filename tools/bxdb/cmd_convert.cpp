// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <memory>

#include "commands.h"
#include "compressing.h"
#include "device_description.h"
#include "failure.h"
#include "file_names.h"
#include "loaded_database.h"
#include "loss_proof.h"
#include "output_file.h"
#include "progress.h"
#include "text.h"
#include "ut_filemanager.h"

namespace bxdb {
namespace {

/// Says what the form cannot hold; true when there is nothing.
bool fits(const loaded_database& loaded, qelmodb::form as, const convert_options& options) {
  constexpr std::size_t most_shown = 100;
  const auto objections = qelmodb::dump_objections(*loaded.db, as, loaded.what, most_shown);
  for (const qelmodb::objection& objection : objections) {
    fmt::print(stderr, "bxdb: {}: {}: {}\n", printable(loaded.name), printable(objection.path),
               printable(objection.reason));
  }
  if (objections.empty()) return true;
  fmt::print(stderr, "bxdb: {}: not written: {}{} cannot be held by a {} {} file\n",
             printable(shown_output(options.out)), objections.size() == most_shown ? "at least " : "",
             counted(static_cast<std::int64_t>(objections.size()), "name"), qelmodb::to_string(as),
             qelmodb::to_string(loaded.what));
  return false;
}

/// Compresses what was loaded, and says what would not come back of it; true when the file is to be written. What a
/// compressed file held comes back with the templates that it held.
bool compressed(const loaded_database& loaded, const convert_options& options, qelmodb::compression_losses& losses) {
  if (loaded.report.file_form == qelmodb::form::compressed) return true;
  if (!compress_database(*loaded.db, loaded.name, shown_output(options.out) + ": not written")) return false;
  losses = losses_of(*loaded.db, loaded.name);
  report_losses(losses, loaded.name);
  if (losses.total() == 0 || options.allow_loss) return true;
  fmt::print(stderr, "bxdb: {}: not written: it would not give everything back; see --allow-loss\n",
             printable(shown_output(options.out)));
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
  const std::string name = shown_output(options.out);
  progress shown("reading back " + name);
  UT_MEMFILE file(unpack(bytes, how, name, bytes.max_size() / 2));
  const auto back = std::make_unique<BX_DB>();
  back->setseparator('$');
  if (!qelmodb::load(*back, file, loaded.what, shown.options()) || !as_expected(loaded, *back, losses)) {
    throw failure(name + ": not written: reading it back does not give what " + loaded.name + " holds");
  }
}

void check_names(const loaded_database& loaded, qelmodb::form as, const convert_options& options) {
  if (as == qelmodb::form::compressed) check_compressible(loaded);
  if (loaded.what == qelmodb::content::grid || !is_grid_name(options.out)) return;
  throw failure(options.out + ": the name is one of a grid file, but " + loaded.name + " holds a database with wires");
}

/// A file may be replaced by itself, as that happens when all of it was read and the new one read back; but a stream
/// into it would be added to what it holds. Its description would be lost.
void check_output(const convert_options& options) {
  const bool is_stream = is_standard_stream(options.out) || UT_FILEMANAGER::is_stream(options.out.c_str());
  if (is_stream) refuse_input_as_output(options.in, options.out);
  refuse_description_as_output(options.in, options.out);
}

}  // namespace

int run_convert(const convert_options& options) {
  const qelmodb::form as = form_named(options.form);
  check_output(options);
  const loaded_database loaded = load_database(options.in, options.input);
  check_names(loaded, as, options);
  qelmodb::compression_losses losses;
  if (as == qelmodb::form::compressed ? !compressed(loaded, options, losses) : !fits(loaded, as, options)) return no;
  const packing how = packing_for(options.out);
  const std::string bytes = finished_bytes(loaded, as, how, shown_output(options.out));
  verify(bytes, how, loaded, options, losses);
  output_file out(options.out, packing::none);
  write_all(out.stream(), bytes.data(), bytes.size());
  out.commit();
  if (!is_standard_stream(options.in) && !is_standard_stream(options.out)) {
    take_description_along(options.in, options.out);
  }
  return done;
}

}  // namespace bxdb
