// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Questions to a device at rest: wires by name, and instances by position.
#include <vector>

#include "cell_array.h"
#include "flat_hash.h"
#include "questions.h"
#include "registry.h"

namespace {

void wire_by_name(benchmark::State& state) {
  const std::vector<bench::pointer_question> asked = bench::pointer_questions(bench::many_questions);
  std::int64_t sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const bench::pointer_question& q : asked) {
      const BX_WIRE* wire = q.inst->getwire(q.name, nullptr);
      if (wire != nullptr) sum += std::int64_t{wire->getnodex()} + wire->getnodey();
    }
    benchmark::DoNotOptimize(sum);
  }
  bench::require(sum == bench::expected_wire_answers(asked.size()), "not the wires of the device");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void wire_by_name_limit(benchmark::State& state) {
  static const bench::flat_hash hash(bench::flat_device());
  const auto asked = bench::wire_questions(bench::many_questions);
  std::int64_t sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (const bench::wire_question& q : asked) {
      const bench::flat_hash::slot* wire = hash.find(q.instance, q.name);
      if (wire != nullptr) sum += std::int64_t{wire->x} + wire->y;
    }
    benchmark::DoNotOptimize(sum);
  }
  bench::require(sum == bench::expected_wire_answers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void instances_at_point(benchmark::State& state) {
  const auto asked = bench::points(bench::many_points);
  bench::cover_sums sums;
  for (auto _ : state) benchmark::DoNotOptimize(sums = bench::library_covers(asked));
  bench::require(sums.instances != 0, "nothing covers any point");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void instances_at_point_limit(benchmark::State& state) {
  static const bench::cell_array cells(bench::flat_device(), bench::device_lines());
  const auto asked = bench::points(bench::many_points);
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    for (const BX_POINT& point : asked) cells.count_covers(point, sums);
    benchmark::DoNotOptimize(sums);
  }
  bench::require(sums == bench::expected_covers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void add_all() {
  bench::add("wire_by_name", bench::library, wire_by_name);
  bench::add("wire_by_name", bench::limit, wire_by_name_limit);
  bench::add("instances_at_point", bench::library, instances_at_point);
  bench::add("instances_at_point", bench::limit, instances_at_point_limit);
}

const bench::registrar registered(add_all);

}  // namespace
