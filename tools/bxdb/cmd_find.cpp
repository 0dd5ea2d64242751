// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <memory>
#include <optional>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"

namespace bxdb {
namespace {

struct find_options {
  std::string file;
  std::string name;
  input_options input;
  bool only_instances = false;
  bool only_wires = false;
  bool as_json = false;
};

/// Prints what is found as it is found: there may be more than memory holds.
class finder {
 public:
  explicit finder(const find_options& options) : options_(options) {
    if (options.as_json) document_.emplace(json{{"file", options.file}, {"name", options.name}}, "found");
  }

  void visit(const BX_INSTANCE& inst, bx_long depth) {
    path_.enter(inst, depth);
    if (!options_.only_wires && options_.name == ut_text(inst.name)) add(inst);
    if (options_.only_instances) return;
    for (const BX_WIRE& wire : inst.wires) {
      if (options_.name == ut_text(wire.name)) add(wire);
    }
  }

  int end() {
    if (document_) document_->end({{"instances", instances_}, {"wires", wires_}});
    if (instances_ + wires_ != 0) return done;
    fmt::print(stderr, "{}: nothing named \"{}\"\n", printable(options_.file), printable(options_.name));
    return no;
  }

 private:
  void add(const BX_INSTANCE& inst) {
    ++instances_;
    if (document_) {
      document_->add({{"kind", "instance"}, {"path", path_.text()}, {"box", rectangle_json(inst)}});
    } else {
      fmt::print("instance {} {}\n", printable(path_.text()), rectangle_text(inst));
    }
  }

  void add(const BX_WIRE& wire) {
    ++wires_;
    const std::string path = path_.text() + "/" + ut_text(wire.name);
    if (document_) {
      document_->add({{"kind", "wire"}, {"path", path}, {"node", position_json(wire)}});
    } else {
      fmt::print("wire {} {}\n", printable(path), position_text(wire));
    }
  }

  const find_options& options_;
  path_names path_;
  std::optional<json_list_document> document_;
  std::int64_t instances_ = 0;
  std::int64_t wires_ = 0;
};

int run(const find_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  finder found(options);
  bx_walk(*loaded.db, [&found](const BX_INSTANCE& inst, bx_long depth) {
    found.visit(inst, depth);
    return true;
  });
  return found.end();
}

}  // namespace

void add_find_command(CLI::App& tool, int& status) {
  CLI::App& command = *tool.add_subcommand("find", "Lists instances and wires of a name; status 1 when there are none");
  const auto options = std::make_shared<find_options>();
  command.add_option("FILE", options->file, "The file")->required();
  command.add_option("NAME", options->name, "The name, exactly; put -- before one that begins with \"-\"")->required();
  CLI::Option* instances = command.add_flag("--instances", options->only_instances, "List instances only");
  command.add_flag("--wires", options->only_wires, "List wires only")->excludes(instances);
  command.add_flag("--json", options->as_json, "Print JSON");
  add_input_options(command, options->input);
  add_cut_option(command, options->input);
  command.footer("Example: bxdb find device.bxd BASIC_ASS --instances");
  command.callback([options, &status] { status = run(*options); });
}

}  // namespace bxdb
