// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <optional>
#include <unordered_map>

#include "commands.h"
#include "failure.h"
#include "file_names.h"
#include "grid_picture.h"
#include "host.h"
#include "json_output.h"
#include "loaded_database.h"
#include "output_file.h"
#include "printable_names.h"
#include "progress.h"
#include "report_buffer.h"
#include "text.h"
#include "tile_grid.h"

namespace bxdb {
namespace {

std::string file_name_of(const std::string& path) {
  const std::u8string name = path_of(path).filename().u8string();
  return {name.begin(), name.end()};
}

// ---- what is printed

void check_place(const BX_GRID& grid, const grid_options& options) {
  if (options.row >= 0 && options.row < grid.getnumrows() && options.column >= 0 &&
      options.column < grid.getnumcols()) {
    return;
  }
  throw failure(fmt::format("{}: no row {}, column {}: the grid has {} and {}, counted from 0",
                            shown_input(options.file), options.row, options.column, counted(grid.getnumrows(), "row"),
                            counted(grid.getnumcols(), "column")));
}

/// Prints the tiles of a cell in its order. One walk finds the paths of all of them.
void print_cell(const BX_DB& db, const DARRAY_BX_INSTPTR& cell) {
  std::unordered_map<const BX_INSTANCE*, std::string> paths;
  for (const BX_INSTANCE* tile : cell) paths[tile];
  path_names path;
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    if (const auto at = paths.find(&inst); at != paths.end()) at->second = path.text();
    return true;
  });
  for (const BX_INSTANCE* tile : cell) {
    fmt::print("instance {} {}\n", printable(paths[tile]), rectangle_text(*tile));
  }
}

json cell_json(short row, short column, const DARRAY_BX_INSTPTR& cell) {
  json tiles = json::array();
  for (const BX_INSTANCE* tile : cell) tiles.push_back({{"name", ut_text(tile->name)}, {"box", rectangle_json(*tile)}});
  return {{"row", row}, {"column", column}, {"tiles", std::move(tiles)}};
}

/// Calls visit(row, column, tiles) for the cells that hold tiles, row by row.
template <class Visit>
void visit_cells(const BX_GRID& grid, Visit visit) {
  for (short row = 0; row < grid.getnumrows(); ++row) {
    for (short column = 0; column < grid.getnumcols(); ++column) {
      const DARRAY_BX_INSTPTR* cell = grid.getinstances(row, column);
      if (cell != nullptr && cell->getcount() != 0) visit(row, column, *cell);
    }
  }
}

json_list_document cells_document(const BX_GRID& grid, const grid_options& options) {
  return {json{{"file", options.file}, {"rows", grid.getnumrows()}, {"columns", grid.getnumcols()}}, "cells"};
}

int show_cell(const BX_DB& db, const BX_GRID& grid, const grid_options& options) {
  const auto row = static_cast<short>(options.row);
  const auto column = static_cast<short>(options.column);
  const DARRAY_BX_INSTPTR* cell = grid.getinstances(row, column);
  const bool empty = cell == nullptr || cell->getcount() == 0;
  if (options.as_json) {
    json_list_document document = cells_document(grid, options);
    if (!empty) document.add(cell_json(row, column, *cell));
    document.end(json::object());
  } else if (!empty) {
    print_cell(db, *cell);
  }
  if (!empty) return done;
  fmt::print(stderr, "{}: no tile in row {}, column {}\n", printable(shown_input(options.file)), row, column);
  return no;
}

void print_json_cells(const BX_GRID& grid, const grid_options& options) {
  json_list_document document = cells_document(grid, options);
  visit_cells(grid, [&document](short row, short column, const DARRAY_BX_INSTPTR& cell) {
    document.add(cell_json(row, column, cell));
  });
  document.end(json::object());
}

void print_report(const BX_GRID& grid, const grid_options& options) {
  const report_buffer buffer;
  if (options.extrema) {
    grid.printextrema();
  } else {
    grid.printme();
  }
}

// ---- what is drawn

void write_file(const std::string& name, const std::string& bytes) {
  const progress shown("writing " + shown_output(name));
  output_file out(name, packing_for(name));
  write_all(out.stream(), bytes.data(), bytes.size());
  out.commit();
}

void draw(const BX_DB& db, const BX_GRID& grid, const grid_options& options) {
  std::string png;
  std::string svg;
  {
    const progress shown("drawing the grid of " + shown_input(options.file));
    const std::string name = file_name_of(shown_input(options.file));
    const grid_picture picture(db, grid, name);
    if (!options.png.empty()) png = picture.png();
    if (!options.svg.empty()) svg = picture.svg();
  }
  if (!options.png.empty()) write_file(options.png, png);
  // Names that differ in more than one way can be one file all the same, which is known when that exists.
  if (!options.png.empty() && !options.svg.empty()) refuse_same_outputs(options.png, options.svg);
  if (!options.svg.empty()) write_file(options.svg, svg);
}

/// The names of the pictures that are asked for.
std::vector<std::string> pictures_of(const grid_options& options) {
  std::vector<std::string> names;
  if (!options.png.empty()) names.push_back(options.png);
  if (!options.svg.empty()) names.push_back(options.svg);
  return names;
}

/// Whether the library's report is printed.
bool is_reported(const grid_options& options) {
  return !options.as_json && !options.one_cell && (pictures_of(options).empty() || options.extrema);
}

/// The options with which the same tiles are found under printable names.
grid_options with_printable_prefixes(grid_options options) {
  for (std::string& prefix : options.prefixes) prefix = printable(prefix);
  return options;
}

/// Throws failure when an output would destroy an input or another output.
void check_files(const grid_options& options) {
  if (!options.device.empty()) refuse_same_streams(options.file, options.device);
  const std::vector<std::string> pictures = pictures_of(options);
  if (pictures.size() == 2) refuse_same_outputs(pictures[0], pictures[1]);
  for (const std::string& picture : pictures) {
    refuse_input_as_output(options.file, picture);
    if (!options.device.empty()) refuse_input_as_output(options.device, picture);
    refuse_description_as_output(options.file, picture);
    if (options.as_json || options.one_cell || options.extrema) refuse_standard_output(picture);
  }
}

}  // namespace

int run_grid(const grid_options& options) {
  check_files(options);
  const loaded_database loaded = load_database(options.file, options.input);
  // The report's columns are as wide as the names that the grid is made of.
  std::optional<printable_names> names;
  if (is_reported(options) && !options.raw) names.emplace(*loaded.db, printable_names::of::instances);
  const std::unique_ptr<BX_GRID> grid = make_tile_grid(loaded, names ? with_printable_prefixes(options) : options);
  if (options.one_cell) check_place(*grid, options);
  const bool drawn = !pictures_of(options).empty();
  if (drawn) draw(*loaded.db, *grid, options);
  if (options.one_cell) return show_cell(*loaded.db, *grid, options);
  if (options.as_json) {
    print_json_cells(*grid, options);
  } else if (is_reported(options)) {
    print_report(*grid, options);
  }
  return done;
}

}  // namespace bxdb
