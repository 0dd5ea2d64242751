// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <optional>

#include "commands.h"
#include "failure.h"
#include "file_names.h"
#include "json_output.h"
#include "loaded_database.h"
#include "text.h"
#include "tree_diff.h"

namespace bxdb {
namespace {

std::string difference_text(const difference& one) {
  std::string text = fmt::format("{} {} {}", one.wire_a != nullptr || one.wire_b != nullptr ? "wire" : "instance",
                                 to_string(one.what), one.path);
  const auto places = [&text](const auto* a, const auto* b, auto shown) {
    if (a != nullptr) text += " " + shown(*a);
    if (a != nullptr && b != nullptr) text += " ->";
    if (b != nullptr) text += " " + shown(*b);
  };
  if (one.what == change::renamed) return text + " -> " + ut_text(one.instance_b->name);
  places(one.instance_a, one.instance_b, rectangle_text);
  places(one.wire_a, one.wire_b, position_text);
  if (one.instances > 1 || one.wires > 0) {
    text += fmt::format(", in all {} and {}", counted(one.instances, "instance"), counted(one.wires, "wire"));
  }
  return text;
}

json difference_json(const difference& one) {
  const bool wire = one.wire_a != nullptr || one.wire_b != nullptr;
  json record{{"kind", wire ? "wire" : "instance"}, {"change", to_string(one.what)}, {"path", one.path}};
  if (one.what == change::renamed) {
    record["name_a"] = ut_text(one.instance_a->name);
    record["name_b"] = ut_text(one.instance_b->name);
    return record;
  }
  if (one.instance_a != nullptr) record["a"] = rectangle_json(*one.instance_a);
  if (one.instance_b != nullptr) record["b"] = rectangle_json(*one.instance_b);
  if (one.wire_a != nullptr) record["a"] = position_json(*one.wire_a);
  if (one.wire_b != nullptr) record["b"] = position_json(*one.wire_b);
  if (one.instances != 0) {
    record["instances"] = one.instances;
    record["wires"] = one.wires;
  }
  return record;
}

json counts_json(const change_counts& counts) {
  return {{"added", counts.added},
          {"removed", counts.removed},
          {"moved", counts.moved},
          {"resized", counts.resized},
          {"renamed", counts.renamed}};
}

std::string counts_text(const char* what, const change_counts& counts) {
  std::string text =
      fmt::format("{}: {} added, {} removed, {} moved", what, counts.added, counts.removed, counts.moved);
  // Wires have no size, and only the root can get another name.
  if (std::string_view(what) == "instances") text += fmt::format(", {} resized", counts.resized);
  if (counts.renamed != 0) text += fmt::format(", {} renamed", counts.renamed);
  return text;
}

/// Lists the differences as they are met: there may be more than memory holds.
class diff_printer {
 public:
  diff_printer(const diff_options& options, bool with_wires) : options_(options) {
    if (!options.as_json) return;
    document_.emplace(json{{"a", options.a}, {"b", options.b}, {"wires_compared", with_wires}}, "differences");
  }

  void print(const difference& one) {
    if (options_.summary) return;
    if (document_) {
      document_->add(difference_json(one));
    } else {
      fmt::print("{}\n", printable(difference_text(one)));
    }
  }

  void end(const diff_counts& counts) {
    if (document_) {
      document_->end({{"equal", counts.equal()},
                      {"instances", counts_json(counts.instances)},
                      {"wires", counts_json(counts.wires)}});
      return;
    }
    if (counts.equal()) {
      fmt::print("{} and {} are equal\n", printable(shown_input(options_.a)), printable(shown_input(options_.b)));
      return;
    }
    fmt::print("{}\n{}\n", counts_text("instances", counts.instances), counts_text("wires", counts.wires));
  }

 private:
  const diff_options& options_;
  std::optional<json_list_document> document_;
};

}  // namespace

int run_diff(const diff_options& options) {
  refuse_same_streams(options.a, options.b);
  const loaded_database a = load_database(options.a, options.input);
  const loaded_database b = load_database(options.b, options.input);
  const bool with_wires = a.what == qelmodb::content::database && b.what == qelmodb::content::database;
  if (a.what != b.what) {
    fmt::print(stderr, "bxdb: {}: a grid file has no wires; only instances are compared\n",
               printable(a.what == qelmodb::content::grid ? a.name : b.name));
  }
  diff_printer printer(options, with_wires);
  const diff_counts counts =
      diff_trees(*a.db, *b.db, with_wires, [&printer](const difference& one) { printer.print(one); });
  printer.end(counts);
  return counts.equal() ? done : no;
}

}  // namespace bxdb
