// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

struct info_options {
  std::string file;
  input_options input;
  bool as_json = false;
};

qelmodb::tree_size measured(const loaded_database& loaded) {
  const progress shown("counting " + loaded.name);
  return qelmodb::measure(*loaded.db);
}

void print_text(const loaded_database& loaded, const qelmodb::tree_size& size) {
  const qelmodb::check_report& report = loaded.report;
  fmt::print("{}\n", printable(loaded.name));
  fmt::print("  form           {} {} file\n", to_string(report.file_form),
             loaded.what == qelmodb::content::grid ? "grid" : "database");
  fmt::print("  packing        {}\n", to_string(loaded.packed));
  fmt::print("  size           {} bytes ({})\n", loaded.size, size_text(loaded.size));
  if (loaded.packed != packing::none) {
    fmt::print("  size on disk   {} bytes ({})\n", loaded.size_on_disk, size_text(loaded.size_on_disk));
  }
  fmt::print("  root           {}\n", printable(ut_text(loaded.db->name)));
  fmt::print("  instances      {}\n", size.instances);
  fmt::print("  wires          {}\n", size.wires);
  fmt::print("  distinct names {}\n", size.names);
  fmt::print("  depth          {}\n", size.depth);
  fmt::print("  BASIC_ASS      {} with {}\n", counted(size.basic_ass, "instance"),
             counted(size.basic_ass_wires, "wire"));
  fmt::print("  bounding box   {}\n", rectangle_text(size.box));
  fmt::print("  faults         {}, {}, {}\n", counted(report.errors, "error"), counted(report.warnings, "warning"),
             counted(report.notes, "note"));
  fmt::print("  time to check  {:.3f} s\n", loaded.times.check);
  fmt::print("  time to load   {:.3f} s\n", loaded.times.load);
}

void print_as_json(const loaded_database& loaded, const qelmodb::tree_size& size) {
  const qelmodb::check_report& report = loaded.report;
  print_json({{"file", loaded.name},
              {"form", to_string(report.file_form)},
              {"content", to_string(loaded.what)},
              {"packing", to_string(loaded.packed)},
              {"bytes", loaded.size},
              {"bytes_on_disk", loaded.size_on_disk},
              {"root", ut_text(loaded.db->name)},
              {"instances", size.instances},
              {"wires", size.wires},
              {"names", size.names},
              {"depth", size.depth},
              {"basic_ass", size.basic_ass},
              {"basic_ass_wires", size.basic_ass_wires},
              {"box", rectangle_json(size.box)},
              {"warnings", report.warnings},
              {"notes", report.notes},
              {"check_seconds", loaded.times.check},
              {"load_seconds", loaded.times.load}});
}

void run(const info_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_size size = measured(loaded);
  if (options.as_json) {
    print_as_json(loaded, size);
  } else {
    print_text(loaded, size);
  }
}

}  // namespace

void add_info_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("info", "Shows form, counts, bounding box, sizes and times of a file");
  const auto options = std::make_shared<info_options>();
  command.add_option("FILE", options->file, "The file")->required();
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb info device.bxd.gz");
  command.callback([options, &status] {
    run(*options);
    status = done;
  });
}

}  // namespace bxdb
