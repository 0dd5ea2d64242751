// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The index over a finished tree: making it, and its answers.
#include <vector>

#include "node_array.h"
#include "qelmoindex.h"
#include "questions.h"
#include "registry.h"

namespace {

const qelmodb::tree_index& index() {
  static const qelmodb::tree_index made(bench::device());
  return made;
}

void build(benchmark::State& state) {
  const BX_DB& db = bench::device();
  std::size_t bytes = 0;
  for (auto _ : state) {
    const qelmodb::tree_index made(db);
    bytes = made.memory();
  }
  bench::require(bytes != 0, "nothing was made");
  bench::set_bytes(state, bytes);
}

void wire_by_name(benchmark::State& state) {
  const std::vector<bench::pointer_question> asked = bench::pointer_questions(bench::many_questions);
  const qelmodb::tree_index& indexed = index();
  std::int64_t sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const bench::pointer_question& q : asked) {
      const BX_WIRE* wire = indexed.wire(*q.inst, q.name);
      if (wire != nullptr) sum += std::int64_t{wire->getnodex()} + wire->getnodey();
    }
    benchmark::DoNotOptimize(sum);
  }
  bench::require(sum == bench::expected_wire_answers(asked.size()), "not the wires of the device");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

// Without the root, which stands first in every answer.
void instances_at_point(benchmark::State& state) {
  const auto asked = bench::points(bench::many_points);
  const qelmodb::tree_index& indexed = index();
  std::vector<BX_INSTANCE*> found;
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const BX_POINT& point : asked) {
      indexed.instances_at(point.x, point.y, found);
      for (std::size_t i = 1; i < found.size(); ++i) sums.count(found[i]);
    }
    benchmark::DoNotOptimize(sums);
  }
  bench::require(sums == bench::expected_covers(asked.size()), "not the instances of the device");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

const bench::node_array& nodes() {
  static const bench::node_array made(bench::flat_device());
  return made;
}

// Nodes of wires that there are, each with all wires that meet there.
void wires_at_node(benchmark::State& state) {
  const auto asked = bench::nodes(bench::many_points);
  const qelmodb::tree_index& indexed = index();
  std::vector<qelmodb::placed_wire> found;
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const BX_POINT& node : asked) {
      indexed.wires_at(node.x, node.y, found);
      for (const qelmodb::placed_wire& placed : found) sums.count(placed.inst);
    }
    benchmark::DoNotOptimize(sums);
  }
  bench::cover_sums expected;
  for (const BX_POINT& node : asked) nodes().count_wires(node, expected);
  bench::require(sums == expected, "not the wires of the device");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void wires_at_node_limit(benchmark::State& state) {
  const auto asked = bench::nodes(bench::many_points);
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const BX_POINT& node : asked) nodes().count_wires(node, sums);
    benchmark::DoNotOptimize(sums);
  }
  bench::require(sums.instances != 0, "no wire at any node");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void add_all() {
  bench::add("index_build", bench::library, build);
  bench::add("indexed_wire_by_name", bench::library, wire_by_name);
  bench::add("indexed_point", bench::library, instances_at_point);
  bench::add("indexed_node", bench::library, wires_at_node);
  bench::add("indexed_node", bench::limit, wires_at_node_limit);
}

const bench::registrar registered(add_all);

}  // namespace
