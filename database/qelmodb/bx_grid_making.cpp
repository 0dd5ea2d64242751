// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Grids and devices for tools: with reasons instead of process ends.
#include <algorithm>
#include <limits>

#include "bx_grid_builder.h"
#include "qelmoext.h"

namespace qelmodb {
namespace {

std::string reason(const bx_grid_problem& problem, const bx_grid_builder& builder) {
  const std::string count = std::to_string(builder.tiles().size());
  switch (problem.kind) {
    case bx_grid_problem::none:
      break;
    case bx_grid_problem::no_rows:
      return builder.tiles().empty() ? "no instance is a tile" : "the " + count + " tiles do not form rows";
    case bx_grid_problem::no_device:
      return "the " + count + " tiles do not fill their rows, and there is no device that tells their places";
    case bx_grid_problem::out_of_paper:
      return problem.detail;
  }
  return {};
}

/// The distinct lower ends of the spans, ascending, and an upper end for the last line.
template <class Lower, class Upper>
std::vector<bx_long> edges_of(const std::vector<bx_tile>& found, Lower lower, Upper upper) {
  std::vector<bx_long> edges;
  edges.reserve(found.size() + 1);
  bx_long last = upper(found.front());
  for (const bx_tile& tile : found) {
    edges.push_back(lower(tile));
    last = std::max(last, upper(tile));
  }
  std::sort(edges.begin(), edges.end());
  edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
  // The tiles of the last line may have no extent.
  constexpr bx_long greatest = std::numeric_limits<bx_long>::max();
  if (edges.back() < last) {
    edges.push_back(last);
  } else if (edges.back() < greatest) {
    edges.push_back(edges.back() + 1);
  } else if (edges.size() == 1) {
    edges.insert(edges.begin(), greatest - 1);
  }
  return edges;
}

}  // namespace

std::unique_ptr<BX_GRID> make_grid(BX_DB& db, const char* const* prefixes, tiles which, std::string& why) {
  bx_grid_builder builder(db, prefixes, which == tiles::with_wires);
  std::unique_ptr<BX_GRID> grid = bx_grid_builder::empty_grid();
  const bx_grid_problem problem = builder.build(*grid);
  if (problem.kind == bx_grid_problem::none) return grid;
  why = reason(problem, builder);
  return nullptr;
}

std::unique_ptr<NP_TABLEDEVICE> device_of_tiles(BX_DB& db, const char* const* prefixes, tiles which, std::string& why) {
  bx_grid_builder builder(db, prefixes, which == tiles::with_wires);
  const std::vector<bx_tile>& found = builder.collect();
  if (found.empty()) {
    why = "no instance is a tile";
    return nullptr;
  }
  std::vector<bx_long> rows = edges_of(
      found, [](const bx_tile& tile) { return tile.bottom; }, [](const bx_tile& tile) { return tile.top; });
  std::vector<bx_long> columns = edges_of(
      found, [](const bx_tile& tile) { return tile.inst->xmin; }, [](const bx_tile& tile) { return tile.right; });
  constexpr std::size_t most_edges = NP_TABLEDEVICE::max_lines + 1;
  if (rows.size() > most_edges || columns.size() > most_edges) {
    why = "the tiles begin at " + std::to_string(rows.size() - 1) + " heights and " +
          std::to_string(columns.size() - 1) + " left edges; a device has at most " +
          std::to_string(NP_TABLEDEVICE::max_lines) + " rows and columns";
    return nullptr;
  }
  return std::make_unique<NP_TABLEDEVICE>(std::move(rows), std::move(columns));
}

}  // namespace qelmodb
