// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <optional>

#include "commands.h"
#include "failure.h"
#include "file_names.h"
#include "index_paths.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"

namespace bxdb {
namespace {

/// Prints what is found as it is found: there may be more than memory holds.
class finder {
 public:
  finder(const qelmodb::tree_index& index, const find_options& options)
      : index_(index), options_(options), paths_(index) {
    if (options.as_json) document_.emplace(json{{"file", options.file}, {"name", options.name}}, "found");
  }

  void find_instances() {
    for (const BX_INSTANCE* inst : index_.instances_named(options_.name.c_str())) add(*inst);
  }

  void find_all() {
    for (const BX_INSTANCE* inst : index_.instances()) {
      if (!options_.only_wires && options_.name == ut_text(inst->name)) add(*inst);
      const char* name = options_.name.c_str();
      for (const BX_WIRE* wire = nullptr; (wire = index_.wire(*inst, name, wire)) != nullptr;) add(*inst, *wire);
    }
  }

  int end() {
    if (document_) document_->end({{"instances", instances_}, {"wires", wires_}});
    if (instances_ + wires_ != 0) return done;
    fmt::print(stderr, "{}: nothing named \"{}\"\n", printable(shown_input(options_.file)), printable(options_.name));
    return no;
  }

 private:
  void add(const BX_INSTANCE& inst) {
    ++instances_;
    if (document_) {
      document_->add({{"kind", "instance"}, {"path", paths_.of(inst)}, {"box", rectangle_json(inst)}});
    } else {
      fmt::print("instance {} {}\n", printable(paths_.of(inst)), rectangle_text(inst));
    }
  }

  void add(const BX_INSTANCE& inst, const BX_WIRE& wire) {
    ++wires_;
    const std::string path = paths_.of(inst) + "/" + ut_text(wire.name);
    if (document_) {
      document_->add({{"kind", "wire"}, {"path", path}, {"node", position_json(wire)}});
    } else {
      fmt::print("wire {} {}\n", printable(path), position_text(wire));
    }
  }

  const qelmodb::tree_index& index_;
  const find_options& options_;
  index_paths paths_;
  std::optional<json_list_document> document_;
  std::int64_t instances_ = 0;
  std::int64_t wires_ = 0;
};

}  // namespace

int run_find(const find_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_index index = index_of(loaded);
  finder found(index, options);
  if (options.only_instances) {
    found.find_instances();
  } else {
    found.find_all();
  }
  return found.end();
}

}  // namespace bxdb
