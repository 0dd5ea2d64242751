// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <cstring>
#include <optional>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"

namespace bxdb {
namespace {

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

}  // namespace

int run_find(const find_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  finder found(options);
  bx_walk(*loaded.db, [&found](const BX_INSTANCE& inst, bx_long depth) {
    found.visit(inst, depth);
    return true;
  });
  return found.end();
}

}  // namespace bxdb
