// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "commands.h"
#include "device_generator.h"
#include "failure.h"
#include "input_file.h"
#include "output_file.h"
#include "progress.h"

namespace bxdb {
namespace {

struct generate_options {
  std::string out;
  std::string form = "binary";
  std::string names = "kind";
  std::string profile = "device";
  device_options device;
};

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

void run(const generate_options& options) {
  const std::unique_ptr<BX_DB> db = generated(options);
  const auto what = is_grid_name(options.out) ? qelmodb::content::grid : qelmodb::content::database;
  const auto as = options.form == "text" ? qelmodb::form::text : qelmodb::form::binary;
  const progress shown("writing " + options.out);
  output_file out(options.out, packing_for(options.out));
  if (!qelmodb::dump(*db, out.stream(), as, what)) out.stream().fail();
  out.commit();
}

void add_choice(CLI::App& command, const char* name, std::string& choice, const char* help,
                const std::vector<std::string>& choices) {
  command.add_option(name, choice, help)->check(CLI::IsMember(choices))->type_name("")->capture_default_str();
}

void add_device_options(CLI::App& command, generate_options& options) {
  device_options& device = options.device;
  command.add_option("--columns", device.columns, "Columns of tiles, I/O ring included")->capture_default_str();
  command.add_option("--rows", device.rows, "Rows of tiles, I/O ring included")->capture_default_str();
  command.add_option("--wires", device.wires, "Wires of the largest switch matrix")->capture_default_str();
  command.add_option("--seed", device.seed, "Another number gives another device")->capture_default_str();
  add_choice(command, "--names", options.names, "Name tiles after their kind, or each by its own name",
             {"kind", "unique"});
  add_choice(command, "--profile", options.profile,
             "A device with I/O ring, columns of several kinds and switch matrices; or one level of columns x rows "
             "equal tiles",
             {"device", "plain"});
}

}  // namespace

void add_generate_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("generate", "Writes a synthetic device; the same options give the same one");
  const auto options = std::make_shared<generate_options>();
  command
      .add_option("OUT", options->out,
                  "The file to write; packed when its name ends in .gz or .zst, a grid file when in .bxg")
      ->required();
  add_choice(command, "--form", options->form, "The form of the file", {"binary", "text"});
  add_device_options(command, *options);
  command.footer("Example: bxdb generate device.bxd --columns 40 --rows 30 --wires 80 --form text");
  command.callback([options, &status] {
    run(*options);
    status = done;
  });
}

}  // namespace bxdb
