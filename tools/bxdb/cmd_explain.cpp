// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "commands.h"
#include "compressing.h"
#include "counting_stream.h"
#include "explanation.h"
#include "failure.h"
#include "file_names.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

/// Size of the binary form: that of the file, or of what dumping the database gives.
std::int64_t binary_size_of(const loaded_database& loaded) {
  if (loaded.report.file_form == qelmodb::form::binary) return static_cast<std::int64_t>(loaded.size);
  const progress shown("measuring the binary form of " + loaded.name);
  counting_stream file;
  if (!qelmodb::dump(*loaded.db, file, qelmodb::form::binary, loaded.what)) throw std::bad_alloc();
  return file.count();
}

/// Size and sections of the compressed form: those of the file, or of what compressing the database gives.
void measure_compressed(const loaded_database& loaded, explanation& about) {
  if (loaded.report.file_form == qelmodb::form::compressed) {
    about.compressed_size = static_cast<std::int64_t>(loaded.size);
    about.sections = loaded.report.sections;
    return;
  }
  const progress shown("measuring the compressed form of " + loaded.name);
  UT_MEMFILE file;
  if (!qelmodb::dump(*loaded.db, file, qelmodb::form::compressed, loaded.what)) throw std::bad_alloc();
  about.compressed_size = static_cast<std::int64_t>(file.bytes().size());
  about.sections = qelmodb::check_bytes(file.bytes(), loaded.what).sections;
}

void search_near(const BX_DB& db, explanation& about) {
  const progress shown("looking for templates that are nearly the same in " + shown_input(about.options.file));
  near_options options;
  options.most_wires = about.options.near_wires;
  about.near = find_near_templates(about.census.templates, options);
  for (const near_miss& miss : about.near.found) about.paths[about.of(miss.number).first];
  path_names path;
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    if (const auto at = about.paths.find(&inst); at != about.paths.end()) at->second = path.text();
    return true;
  });
}

template_census census_of(const loaded_database& loaded) {
  const progress shown("counting " + loaded.name);
  return take_census(*loaded.db);
}

}  // namespace

int run_explain(const explain_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  check_compressible(loaded);
  const bool holds_templates = loaded.report.file_form == qelmodb::form::compressed;
  if (!holds_templates && !compress_database(*loaded.db, loaded.name, loaded.name + ": not explained")) return no;

  const template_census census = census_of(loaded);
  explanation about(options, census);
  about.file_form = loaded.report.file_form;
  about.binary_size = binary_size_of(loaded);
  measure_compressed(loaded, about);
  about.losses = losses_of(*loaded.db, loaded.name);
  search_near(*loaded.db, about);
  if (options.as_json) {
    print_as_json(about);
  } else {
    print_as_text(about);
  }
  return done;
}

}  // namespace bxdb
