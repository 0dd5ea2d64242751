// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Grids: of the device's switch matrices, which leave places free, so that a device is asked for rows and columns; and
// of as many tiles without gaps. Both beside one stable sort of the tiles by row and right edge.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench_device.h"
#include "qelmoext.h"
#include "qelmotmplt.h"
#include "registry.h"

namespace {

constexpr bx_long pitch = 10;

BX_DB& tiles_without_gaps() {
  static const std::unique_ptr<BX_DB> made = [] {
    const auto size = static_cast<bx_long>(bench::device_lines()) * pitch;
    auto db = std::make_unique<BX_DB>("TILES", 0, 0, size, size);
    for (bx_long x = 0; x < size; x += pitch) {
      for (bx_long y = 0; y < size; y += pitch) {
        auto tile = std::make_unique<BX_INSTANCE>(BASIC_ASS_NAME, x, y, x + pitch, y + pitch);
        const BX_WIRE wire("W", x, y);
        tile->addwire(&wire);
        db->addinstance(tile.release());
      }
    }
    return db;
  }();
  return *made;
}

const char* prefixes[] = {BASIC_ASS_NAME, nullptr};

std::unique_ptr<NP_TABLEDEVICE> device_of(BX_DB& db) {
  std::string why;
  return qelmodb::device_of_tiles(db, prefixes, qelmodb::tiles::with_wires, why);
}

// A database keeps the cells of its grids, so each round has one of its own, which borrows the tiles.
void grid(benchmark::State& state, BX_DB& owner) {
  const std::unique_ptr<NP_TABLEDEVICE> places = device_of(owner);
  for (auto _ : state) {
    state.PauseTiming();
    auto db = std::make_unique<BX_DB>();
    db->instances = owner.instances;
    db->setdevice(places.get());
    state.ResumeTiming();
    const BX_GRID* made = db->getgrid(prefixes);
    state.PauseTiming();
    const bool expected = made != nullptr && made->getnumcols() == bench::device_lines();
    db->instances = DARRAY_BX_INSTPTR();
    db.reset();
    bench::require(expected, "not the expected grid");
    state.ResumeTiming();
  }
}

bool is_tile(const BX_INSTANCE& inst) {
  return inst.getnumwires() != 0 && inst.getnuminstances() == 0 && std::string(inst.getname()) == BASIC_ASS_NAME;
}

void grid_limit(benchmark::State& state, BX_DB& owner) {
  std::vector<BX_INSTANCE*> collected;
  bx_walk(static_cast<BX_INSTANCE&>(owner), [&collected](BX_INSTANCE& inst, bx_long) {
    if (is_tile(inst)) collected.push_back(&inst);
    return true;
  });
  for (auto _ : state) {
    std::vector<BX_INSTANCE*> sorted = collected;
    std::stable_sort(sorted.begin(), sorted.end(), [](const BX_INSTANCE* a, const BX_INSTANCE* b) {
      return a->ymax != b->ymax ? a->ymax > b->ymax : a->xmax < b->xmax;
    });
    benchmark::DoNotOptimize(sorted.data());
  }
}

void add_all() {
  using benchmark::State;
  bench::add("grid", bench::library, [](State& state) { grid(state, bench::device()); });
  bench::add("grid", bench::limit, [](State& state) { grid_limit(state, bench::device()); });
  bench::add("grid_without_gaps", bench::library, [](State& state) { grid(state, tiles_without_gaps()); });
  bench::add("grid_without_gaps", bench::limit, [](State& state) { grid_limit(state, tiles_without_gaps()); });
}

const bench::registrar registered(add_all);

}  // namespace
