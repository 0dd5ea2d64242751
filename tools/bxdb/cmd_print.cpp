// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "commands.h"
#include "failure.h"
#include "loaded_database.h"
#include "report_buffer.h"

namespace bxdb {

int run_print(const print_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const report_buffer buffer;
  if (options.grid || loaded.what == qelmodb::content::grid) {
    loaded.db->printgrid(0);
  } else {
    loaded.db->printme(0);
  }
  return done;
}

}  // namespace bxdb
