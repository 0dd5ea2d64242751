// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Questions to a device at rest: wires by name beside a hash map of the same wires, and a walk over the whole tree
// beside one over a bare array of as many wires.
#include <benchmark/benchmark.h>

#include <random>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench_device.h"
#include "qelmoext.h"

namespace {

struct question {
  BX_INSTANCE* inst;
  const char* name;
};

// A hundred thousand wires drawn from all instances that have some.
const std::vector<question>& questions() {
  static const std::vector<question> drawn = [] {
    std::vector<BX_INSTANCE*> owners;
    bx_walk(static_cast<BX_INSTANCE&>(bench::device()), [&](BX_INSTANCE& inst, bx_long) {
      if (inst.getnumwires() != 0) owners.push_back(&inst);
      return true;
    });
    std::mt19937 random(1);
    std::vector<question> made;
    for (int i = 0; i < 100000; ++i) {
      BX_INSTANCE* inst = owners[random() % owners.size()];
      made.push_back(
          {inst, inst->wires[static_cast<bx_long>(random() % static_cast<bx_ulong>(inst->getnumwires()))].name});
    }
    return made;
  }();
  return drawn;
}

void wire_by_name(benchmark::State& state) {
  const std::vector<question>& asked = questions();
  std::int64_t sum = 0;
  for (auto _ : state) {
    for (const question& q : asked) {
      const BX_WIRE* wire = q.inst->getwire(q.name, nullptr);
      sum += wire != nullptr ? wire->nodex : 0;
    }
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(asked.size()) * static_cast<std::int64_t>(state.iterations()));
}

void wire_by_name_in_hash_maps(benchmark::State& state) {
  const std::vector<question>& asked = questions();
  std::unordered_map<const BX_INSTANCE*, std::unordered_map<std::string_view, const BX_WIRE*>> maps;
  for (const question& q : asked) {
    auto& map = maps[q.inst];
    if (!map.empty()) continue;
    for (const BX_WIRE& wire : q.inst->wires) map.emplace(wire.name, &wire);
  }
  std::int64_t sum = 0;
  for (auto _ : state) {
    for (const question& q : asked) sum += maps.at(q.inst).at(q.name)->nodex;
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(static_cast<std::int64_t>(asked.size()) * static_cast<std::int64_t>(state.iterations()));
}

void walk_tree(benchmark::State& state) {
  std::int64_t wires = 0;
  for (auto _ : state) {
    std::int64_t sum = 0;
    wires = 0;
    bx_walk(static_cast<const BX_INSTANCE&>(bench::device()), [&](const BX_INSTANCE& inst, bx_long) {
      for (const BX_WIRE& wire : inst.wires) sum += wire.getnodex();
      wires += inst.getnumwires();
      return true;
    });
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(wires * static_cast<std::int64_t>(state.iterations()));
}

void walk_array(benchmark::State& state) {
  const std::vector<BX_WIRE> wires(static_cast<std::size_t>(qelmodb::measure(bench::device()).wires));
  for (auto _ : state) {
    std::int64_t sum = 0;
    for (const BX_WIRE& wire : wires) sum += wire.getnodex();
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(wires.size()) * static_cast<std::int64_t>(state.iterations()));
}

BENCHMARK(wire_by_name)->Unit(benchmark::kMillisecond);
BENCHMARK(wire_by_name_in_hash_maps)->Unit(benchmark::kMillisecond);
BENCHMARK(walk_tree)->Unit(benchmark::kMillisecond);
BENCHMARK(walk_array)->Unit(benchmark::kMillisecond);

}  // namespace
