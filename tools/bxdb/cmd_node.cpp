// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

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

int run_node(const node_options& options) {
  const loaded_database loaded = load_database(options.file, options.input);
  const qelmodb::tree_index index = index_of(loaded);
  std::vector<qelmodb::placed_wire> found;
  index.wires_at(options.x, options.y, found);
  std::optional<json_list_document> document;
  if (options.as_json) document.emplace(json{{"file", options.file}, {"x", options.x}, {"y", options.y}}, "wires");
  index_paths paths(index);
  for (const qelmodb::placed_wire& placed : found) {
    const std::string path = paths.of(*placed.inst);
    const char* name = ut_text(placed.wire->name);
    if (document) {
      document->add({{"wire", name}, {"instance", path}, {"box", rectangle_json(*placed.inst)}});
    } else {
      fmt::print("wire {} {}\n", printable(path + "/" + name), rectangle_text(*placed.inst));
    }
  }
  if (document) document->end({{"count", found.size()}});
  if (!found.empty()) return done;
  fmt::print(stderr, "{}: no wire at node ({}, {})\n", printable(shown_input(options.file)), options.x, options.y);
  return no;
}

}  // namespace bxdb
