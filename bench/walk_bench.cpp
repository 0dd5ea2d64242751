// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Walks over every wire of the device, beside one over bare arrays of as many instances and wires.
#include "bare_decoding.h"
#include "bench_device.h"
#include "registry.h"

namespace {

void expect(const bench::tree_sums& sums) {
  bench::require(sums == bench::expected_sums(), "not the wires of the device");
}

void walk(benchmark::State& state) {
  const BX_DB& db = bench::device();
  bench::tree_sums sums;
  for (auto _ : state) benchmark::DoNotOptimize(sums = bench::sums_of(db));
  expect(sums);
}

// The same by number, child for child and wire for wire.
void walk_by_number(const BX_INSTANCE& inst, bench::tree_sums& sums) {
  for (bx_long i = 0; i < inst.getnumwires(); ++i) {
    const BX_WIRE* wire = inst.getwire(i);
    sums.count(wire->getnodex(), wire->getnodey());
  }
  for (bx_long i = 0; i < inst.getnuminstances(); ++i) walk_by_number(*inst.getinstance(i), sums);
}

void numbered_walk(benchmark::State& state) {
  const BX_DB& db = bench::device();
  bench::tree_sums sums;
  for (auto _ : state) {
    sums = {};
    walk_by_number(db, sums);
    benchmark::DoNotOptimize(sums);
  }
  expect(sums);
}

// Instances with the place and number of their wires, and wires of 24 bytes.
const bench::bare_tree& arrays() {
  static bench::bare_tree tree(bench::flat_device().instances.size(), bench::flat_device().wires.size());
  static const std::size_t decoded = bench::decode_binary(bench::binary_file(), tree);
  benchmark::DoNotOptimize(decoded);
  return tree;
}

void walk_limit(benchmark::State& state) {
  const bench::bare_tree& tree = arrays();
  const std::size_t instances = bench::flat_device().instances.size();
  bench::tree_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const bench::bare_instance* inst = tree.instances(); inst != tree.instances() + instances; ++inst) {
      const bench::bare_wire* wire = tree.wires() + inst->first_wire;
      for (const bench::bare_wire* end = wire + inst->wires; wire != end; ++wire) sums.count(wire->x, wire->y);
    }
    benchmark::DoNotOptimize(sums);
  }
  expect(sums);
}

void add_all() {
  bench::add("traversal", bench::library, walk);
  bench::add("traversal", bench::limit, walk_limit);
  bench::add("traversal_by_number", bench::library, numbered_walk);
}

const bench::registrar registered(add_all);

}  // namespace
