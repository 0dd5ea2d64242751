// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The grid of 250 thousand tiles, beside one stable sort of as many tiles by row and right edge.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "qelmoext.h"

namespace {

constexpr bx_long lines = 500;

constexpr bx_long pitch = 10;

BX_DB& tiles() {
  static const std::unique_ptr<BX_DB> made = [] {
    auto db = std::make_unique<BX_DB>("TILES", 0, 0, lines * pitch, lines * pitch);
    for (bx_long x = 0; x < lines * pitch; x += pitch) {
      for (bx_long y = 0; y < lines * pitch; y += pitch) {
        auto tile = std::make_unique<BX_INSTANCE>("TILE", x, y, x + pitch, y + pitch);
        const BX_WIRE wire("W", x, y);
        tile->addwire(&wire);
        db->addinstance(tile.release());
      }
    }
    return db;
  }();
  return *made;
}

void grid_build(benchmark::State& state) {
  const char* every_tile[] = {"", nullptr};
  for (auto _ : state) {
    // A database keeps the cells of its grids, so each round has one of its own. It borrows the tiles.
    state.PauseTiming();
    auto db = std::make_unique<BX_DB>();
    db->instances = tiles().instances;
    state.ResumeTiming();
    const BX_GRID* grid = db->getgrid(every_tile);
    state.PauseTiming();
    if (grid->getnumrows() != lines || grid->getnumcols() != lines) state.SkipWithError("not the expected grid");
    db->instances = DARRAY_BX_INSTPTR();
    db.reset();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(std::int64_t{lines} * lines * static_cast<std::int64_t>(state.iterations()));
}

void grid_build_limit(benchmark::State& state) {
  std::vector<BX_INSTANCE*> collected;
  bx_walk(static_cast<BX_INSTANCE&>(tiles()), [&collected](BX_INSTANCE& inst, bx_long) {
    if (inst.getnumwires() != 0) collected.push_back(&inst);
    return true;
  });
  for (auto _ : state) {
    std::vector<BX_INSTANCE*> sorted = collected;
    std::stable_sort(sorted.begin(), sorted.end(), [](const BX_INSTANCE* a, const BX_INSTANCE* b) {
      return a->ymax != b->ymax ? a->ymax > b->ymax : a->xmax < b->xmax;
    });
    benchmark::DoNotOptimize(sorted.data());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(collected.size()) * static_cast<std::int64_t>(state.iterations()));
}

BENCHMARK(grid_build)->Unit(benchmark::kMillisecond);
BENCHMARK(grid_build_limit)->Unit(benchmark::kMillisecond);

}  // namespace
