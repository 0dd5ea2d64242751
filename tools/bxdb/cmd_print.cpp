// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <optional>

#include "commands.h"
#include "failure.h"
#include "loaded_database.h"
#include "printable_names.h"
#include "report_buffer.h"

namespace bxdb {

int run_print(const print_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const bool without_wires = options.grid || loaded.what == qelmodb::content::grid;
  std::optional<printable_names> names;
  if (!options.raw) {
    names.emplace(*loaded.db,
                  without_wires ? printable_names::of::instances : printable_names::of::instances_and_wires);
  }
  const report_buffer buffer;
  if (without_wires) {
    loaded.db->printgrid(0);
  } else {
    loaded.db->printme(0);
  }
  return done;
}

}  // namespace bxdb
