// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The rectangles of the device in an R-tree of Boost.Geometry, packed when it is made.
#include <boost/function_output_iterator.hpp>
#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>

#include "questions.h"
#include "registry.h"

namespace {

namespace bg = boost::geometry;

using point = bg::model::point<std::int32_t, 2, bg::cs::cartesian>;
using box = bg::model::box<point>;
using placed = std::pair<box, const BX_INSTANCE*>;
using tree = bg::index::rtree<placed, bg::index::rstar<16>>;

const tree& rectangles() {
  static const tree made = [] {
    std::vector<placed> boxes;
    const bench::flat_tree& flat = bench::flat_device();
    for (std::size_t i = 1; i < flat.instances.size(); ++i) {
      const bench::flat_instance& inst = flat.instances[i];
      boxes.emplace_back(box(point(inst.xmin, inst.ymin), point(inst.xmax, inst.ymax)), flat.origins[i]);
    }
    return tree(boxes);
  }();
  return made;
}

void instances_at_point(benchmark::State& state) {
  const tree& searched = rectangles();
  const auto asked = bench::points(bench::many_points);
  bench::cover_sums sums;
  for (auto _ : state) {
    sums = {};
    const auto count = [&sums](const placed& found) { sums.count(found.second); };
    for (const BX_POINT& at : asked) {
      searched.query(bg::index::intersects(point(at.x, at.y)), boost::make_function_output_iterator(count));
    }
    benchmark::DoNotOptimize(sums);
  }
  bench::require(sums == bench::expected_covers(asked.size()), "not the library's answers");
  bench::set_items(state, static_cast<std::int64_t>(asked.size()));
}

void add_all() { bench::add("instances_at_point", "Boost R-tree", instances_at_point); }

const bench::registrar registered(add_all);

}  // namespace
