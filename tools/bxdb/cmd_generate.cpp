// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "device_generator.h"
#include "failure.h"
#include "input_file.h"
#include "output_file.h"
#include "progress.h"

namespace bxdb {
namespace {

device_options complete(const generate_options& options) {
  device_options device = options.device;
  device.names = options.names == "unique" ? tile_names::unique : tile_names::kind;
  device.profile = options.profile == "plain" ? device_profile::plain : device_profile::device;
  return device;
}

std::unique_ptr<BX_DB> generated(const generate_options& options) {
  const progress shown("generating " + options.out);
  try {
    return generate_device(complete(options));
  } catch (const std::invalid_argument& e) {
    throw failure(options.out + ": not written: " + e.what());
  }
}

}  // namespace

int run_generate(const generate_options& options) {
  const std::unique_ptr<BX_DB> db = generated(options);
  const auto what = is_grid_name(options.out) ? qelmodb::content::grid : qelmodb::content::database;
  const auto as = options.form == "text" ? qelmodb::form::text : qelmodb::form::binary;
  const progress shown("writing " + options.out);
  output_file out(options.out, packing_for(options.out));
  if (!qelmodb::dump(*db, out.stream(), as, what)) out.stream().fail();
  out.commit();
  return done;
}

}  // namespace bxdb
