// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "progress.h"
#include "text.h"

namespace bxdb {
namespace {

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

void print_as_json(const loaded_database& loaded, const qelmodb::tree_size& size, const std::string& file) {
  const qelmodb::check_report& report = loaded.report;
  print_json({{"file", file},
              {"form", to_string(report.file_form)},
              {"content", to_string(loaded.what)},
              {"packing", to_string(loaded.packed)},
              {"bytes", loaded.size},
              {"bytes_on_disk", loaded.size_on_disk},
              {"root", ut_text(loaded.db->name)},
              {"instances", size.instances},
              {"wires", size.wires},
              {"names", size.names},
              {"name_table", report.names},
              {"depth", size.depth},
              {"basic_ass", size.basic_ass},
              {"basic_ass_wires", size.basic_ass_wires},
              {"box", rectangle_json(size.box)},
              {"errors", report.errors},
              {"warnings", report.warnings},
              {"notes", report.notes},
              {"check_seconds", loaded.times.check},
              {"load_seconds", loaded.times.load}});
}

}  // namespace

int run_info(const info_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_size size = measured(loaded);
  if (options.as_json) {
    print_as_json(loaded, size, options.file);
  } else {
    print_text(loaded, size);
  }
  return done;
}

}  // namespace bxdb
