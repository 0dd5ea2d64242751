// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

#include "commands.h"
#include "failure.h"
#include "file_names.h"
#include "index_paths.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"

namespace bxdb {
namespace {

json head(const at_options& options) { return {{"file", options.file}, {"x", options.x}, {"y", options.y}}; }

int list_instances(const qelmodb::tree_index& index, const at_options& options) {
  std::optional<json_list_document> document;
  if (options.as_json) document.emplace(head(options), "instances");
  index_paths paths(index);
  std::vector<BX_INSTANCE*> found;
  index.instances_at(options.x, options.y, found);
  for (const BX_INSTANCE* inst : found) {
    const std::string path = paths.of(*inst);
    if (document) {
      document->add({{"path", path}, {"depth", index.depth_of(*inst)}, {"box", rectangle_json(*inst)}});
    } else {
      fmt::print("instance {} {}\n", printable(path), rectangle_text(*inst));
    }
  }
  if (document) document->end({{"count", found.size()}});
  if (!found.empty()) return done;
  fmt::print(stderr, "{}: no instance covers ({}, {})\n", printable(shown_input(options.file)), options.x, options.y);
  return no;
}

/// The path of the instance that holds the wire.
std::string path_of_owner(const qelmodb::tree_index& index, const BX_WIRE& wire) {
  std::vector<qelmodb::placed_wire> there;
  index.wires_at(wire.nodex, wire.nodey, there);
  const auto owned = std::find_if(there.begin(), there.end(),
                                  [&wire](const qelmodb::placed_wire& placed) { return placed.wire == &wire; });
  return index_paths(index).of(*owned->inst);
}

int show_wire(const BX_DB& db, const qelmodb::tree_index& index, const at_options& options) {
  const BX_WIRE* wire = db.getwire(options.x, options.y, options.wire.c_str());
  std::string path;
  if (wire != nullptr) path = path_of_owner(index, *wire) + "/" + ut_text(wire->name);
  if (options.as_json) {
    json answer = head(options);
    answer["wire"] = wire == nullptr ? json(nullptr) : json{{"path", path}, {"node", position_json(*wire)}};
    print_json(answer);
  } else if (wire != nullptr) {
    fmt::print("wire {} {}\n", printable(path), position_text(*wire));
  }
  if (wire != nullptr) return done;
  fmt::print(stderr, "{}: no wire \"{}\" at ({}, {})\n", printable(shown_input(options.file)), printable(options.wire),
             options.x, options.y);
  return no;
}

}  // namespace

int run_at(const at_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_index index = index_of(loaded);
  return options.has_wire ? show_wire(*loaded.db, index, options) : list_instances(index, options);
}

}  // namespace bxdb
