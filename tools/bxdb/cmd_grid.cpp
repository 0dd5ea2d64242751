// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <unordered_map>

#include "commands.h"
#include "device_description.h"
#include "failure.h"
#include "file_names.h"
#include "grid_picture.h"
#include "host.h"
#include "json_output.h"
#include "loaded_database.h"
#include "output_file.h"
#include "progress.h"
#include "report_buffer.h"
#include "text.h"

namespace bxdb {
namespace {

qelmodb::tiles tiles_of(const loaded_database& loaded) {
  return loaded.what == qelmodb::content::grid ? qelmodb::tiles::with_or_without_wires : qelmodb::tiles::with_wires;
}

/// The prefixes as the library takes them: ended by a null pointer. Points into the options.
std::vector<const char*> prefixes_of(const grid_options& options) {
  std::vector<const char*> prefixes;
  for (const std::string& prefix : options.prefixes) prefixes.push_back(prefix.c_str());
  if (prefixes.empty()) prefixes.push_back("");
  prefixes.push_back(nullptr);
  return prefixes;
}

std::string file_name_of(const std::string& path) {
  const std::u8string name = path_of(path).filename().u8string();
  return {name.begin(), name.end()};
}

/// The description that the options name, or else the one that stands beside the file; empty when there is none.
std::string description_for(const grid_options& options) {
  if (!options.device.empty()) return options.device;
  if (is_standard_stream(options.file)) return {};
  std::string beside = description_beside(options.file);
  std::error_code unknown;
  return std::filesystem::exists(path_of(beside), unknown) ? beside : std::string();
}

std::unique_ptr<NP_TABLEDEVICE> read_description(const std::string& name, std::uint64_t max_size) {
  std::string why;
  std::unique_ptr<NP_TABLEDEVICE> device;
  if (is_standard_stream(name)) {
    UT_MEMFILE file(read_input_bytes(name, max_size));
    device = NP_TABLEDEVICE::read(file, shown_input(name).c_str(), why);
  } else {
    device = NP_TABLEDEVICE::read(name.c_str(), why);
  }
  if (!device) throw failure(why);
  return device;
}

/// Makes the grid that the options ask for.
class grid_maker {
 public:
  grid_maker(const loaded_database& loaded, const grid_options& options)
      : db_(*loaded.db), options_(options), prefixes_(prefixes_of(options)), which_(tiles_of(loaded)) {}

  /// Throws failure, with the reason, when the tiles give no grid.
  std::unique_ptr<BX_GRID> make() {
    const progress shown("arranging the tiles of " + shown_input(options_.file));
    std::string why;
    std::unique_ptr<BX_GRID> grid;
    if (choose_device(why)) {
      db_.setdevice(device_.get());
      grid = qelmodb::make_grid(db_, prefixes_.data(), which_, why);
      db_.setdevice(nullptr);
    }
    if (!grid) throw failure(fmt::format("{}: no grid: {}{}", shown_input(options_.file), why, hint()));
    return grid;
  }

 private:
  /// False, and why, when no device can be made of the tiles.
  bool choose_device(std::string& why) {
    if (options_.derive_device) {
      device_ = qelmodb::device_of_tiles(db_, prefixes_.data(), which_, why);
      return device_ != nullptr;
    }
    description_ = description_for(options_);
    if (!description_.empty()) device_ = read_description(description_, options_.input.max_size);
    return true;
  }

  /// What may help to a grid.
  std::string hint() const {
    if (!description_.empty()) return " (device: " + description_ + ")";
    std::string why;
    if (options_.derive_device || !qelmodb::device_of_tiles(db_, prefixes_.data(), which_, why)) return {};
    return " (see --device and --derive-device)";
  }

  BX_DB& db_;
  const grid_options& options_;
  std::vector<const char*> prefixes_;
  qelmodb::tiles which_;
  std::string description_;
  std::unique_ptr<NP_TABLEDEVICE> device_;
};

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
  const std::unique_ptr<BX_GRID> grid = grid_maker(loaded, options).make();
  if (options.one_cell) check_place(*grid, options);
  const bool drawn = !pictures_of(options).empty();
  if (drawn) draw(*loaded.db, *grid, options);
  if (options.one_cell) return show_cell(*loaded.db, *grid, options);
  if (options.as_json) {
    print_json_cells(*grid, options);
  } else if (!drawn || options.extrema) {
    print_report(*grid, options);
  }
  return done;
}

}  // namespace bxdb
