// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <optional>

#include "commands.h"
#include "failure.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"

namespace bxdb {
namespace {

bool covers(const BX_INSTANCE& inst, const at_options& at) noexcept {
  return inst.xmin <= at.x && at.x <= inst.xmax && inst.ymin <= at.y && at.y <= inst.ymax;
}

json head(const at_options& options) { return {{"file", options.file}, {"x", options.x}, {"y", options.y}}; }

int list_instances(const BX_DB& db, const at_options& options) {
  std::optional<json_list_document> document;
  if (options.as_json) document.emplace(head(options), "instances");
  path_names path;
  std::int64_t found = 0;
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    if (!covers(inst, options)) return true;
    ++found;
    if (document) {
      document->add({{"path", path.text()}, {"depth", depth}, {"box", rectangle_json(inst)}});
    } else {
      fmt::print("instance {} {}\n", printable(path.text()), rectangle_text(inst));
    }
    return true;
  });
  if (document) document->end({{"count", found}});
  if (found != 0) return done;
  fmt::print(stderr, "{}: no instance covers ({}, {})\n", printable(options.file), options.x, options.y);
  return no;
}

/// The path of the instance that holds the wire.
std::string path_of_owner(const BX_DB& db, const BX_WIRE& wire) {
  path_names path;
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    return inst.wires.intgetindex(&wire) < 0;
  });
  return path.text();
}

int show_wire(const BX_DB& db, const at_options& options) {
  const BX_WIRE* wire = db.getwire(options.x, options.y, options.wire.c_str());
  std::string path;
  if (wire != nullptr) path = path_of_owner(db, *wire) + "/" + ut_text(wire->name);
  if (options.as_json) {
    json answer = head(options);
    answer["wire"] = wire == nullptr ? json(nullptr) : json{{"path", path}, {"node", position_json(*wire)}};
    print_json(answer);
  } else if (wire != nullptr) {
    fmt::print("wire {} {}\n", printable(path), position_text(*wire));
  }
  if (wire != nullptr) return done;
  fmt::print(stderr, "{}: no wire \"{}\" at ({}, {})\n", printable(options.file), printable(options.wire), options.x,
             options.y);
  return no;
}

}  // namespace

int run_at(const at_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  return options.has_wire ? show_wire(*loaded.db, options) : list_instances(*loaded.db, options);
}

}  // namespace bxdb
