// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What the templates of a compressed database cost, and which are nearly the same.
#include "near_templates.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <set>

#include "builders.h"
#include "bx_walk.h"
#include "device_generator.h"
#include "qelmocompress.h"

#include <gtest/gtest.h>

namespace {

using bxdb::find_near_templates;
using bxdb::near_miss;
using bxdb::near_options;
using bxdb::near_templates;
using bxdb::take_census;
using bxdb::template_census;

struct placed {
  const char* name;
  BX_POINT node;
};

class NearTemplates : public ::testing::Test {
 protected:
  /// An instance for each of the places, with these wires in this order.
  void add(const char* name, const std::vector<placed>& wires, int count = 1) {
    for (int i = 0; i < count; ++i) {
      const bx_long y = 10 * next_++;
      auto* inst = new BX_INSTANCE(name, 0, y, 9, y + 9);
      for (const placed& wire : wires) {
        const BX_WIRE copy(wire.name, wire.node.x, y + wire.node.y);
        inst->addwire(&copy);
      }
      db_.addinstance(inst);
    }
  }

  /// The root's template is number 0, and the others follow in the order of add.
  template_census census() {
    qelmodb::intern_root_name(db_);
    db_.compress();
    return take_census(db_);
  }

  near_templates search(std::size_t most_wires = 3) {
    near_options options;
    options.most_wires = most_wires;
    return find_near_templates(census().templates, options);
  }

  static std::vector<std::pair<int, int>> pairs(const near_templates& near) {
    std::vector<std::pair<int, int>> all;
    for (const near_miss& miss : near.found) all.emplace_back(miss.number, miss.other);
    return all;
  }

  BX_DB db_{"r", 0, 0, 9, 9};
  bx_long next_ = 0;
};

using number_pairs = std::vector<std::pair<int, int>>;

TEST_F(NearTemplates, OtherNamesAreNotCompared) {
  add("T", {{"A", {1, 1}}, {"B", {2, 2}}});
  add("U", {{"A", {1, 1}}, {"B", {2, 3}}});
  EXPECT_TRUE(search().found.empty());
}

TEST_F(NearTemplates, TheOneWithMoreInstancesIsThatToBeLike) {
  add("T", {{"A", {1, 1}}}, 2);
  add("T", {{"A", {1, 2}}}, 5);
  add("T", {{"A", {1, 3}}}, 3);
  EXPECT_EQ(pairs(search()), (number_pairs{{3, 2}, {1, 2}}));
}

TEST_F(NearTemplates, OfEquallyManyInstancesTheSmallerNumber) {
  add("T", {{"A", {1, 1}}});
  add("T", {{"A", {1, 2}}});
  EXPECT_EQ(pairs(search()), (number_pairs{{2, 1}}));
}

TEST_F(NearTemplates, TheNearestIsTakenBeforeTheMostFrequent) {
  add("T", {{"A", {1, 1}}, {"B", {1, 1}}}, 5);
  add("T", {{"A", {1, 2}}, {"B", {1, 3}}}, 4);
  add("T", {{"A", {1, 4}}, {"B", {1, 3}}}, 1);
  EXPECT_EQ(pairs(search()), (number_pairs{{2, 1}, {3, 2}}));
}

TEST_F(NearTemplates, OfEquallyNearOnesTheFirst) {
  add("T", {{"A", {1, 1}}}, 2);
  add("T", {{"A", {1, 2}}}, 9);
  add("T", {{"A", {1, 3}}});
  EXPECT_EQ(pairs(search()), (number_pairs{{1, 2}, {3, 1}}));
}

TEST_F(NearTemplates, WiresOfOneNameArePairedWhenBothHaveMore) {
  add("T", {{"A", {1, 1}}, {"A", {2, 2}}, {"A", {3, 3}}, {"Z", {1, 1}}}, 2);
  add("T", {{"A", {2, 2}}, {"A", {4, 4}}, {"B", {5, 5}}, {"Z", {1, 1}}});
  const near_templates near = search();
  ASSERT_EQ(near.found.size(), 1U);
  const auto& wires = near.found[0].wires;
  ASSERT_EQ(wires.size(), 3U);
  EXPECT_STREQ(wires[0].name, "A");
  EXPECT_EQ(wires[0].here, BX_POINT(4, 4));
  EXPECT_EQ(wires[0].there, BX_POINT(1, 1));
  EXPECT_STREQ(wires[1].name, "A");
  EXPECT_FALSE(wires[1].here.has_value());
  EXPECT_EQ(wires[1].there, BX_POINT(3, 3));
  EXPECT_STREQ(wires[2].name, "B");
  EXPECT_EQ(wires[2].here, BX_POINT(5, 5));
  EXPECT_FALSE(wires[2].there.has_value());
  EXPECT_TRUE(search(2).found.empty());
}

TEST_F(NearTemplates, TheSameWiresInAnotherOrderDifferInNothing) {
  add("T", {{"A", {1, 1}}, {"A", {2, 2}}});
  add("T", {{"A", {2, 2}}, {"A", {1, 1}}});
  const near_templates near = search(0);
  ASSERT_EQ(pairs(near), (number_pairs{{2, 1}}));
  EXPECT_TRUE(near.found[0].wires.empty());
}

TEST_F(NearTemplates, WhatTheComparisonsDoNotSufficeForIsSaid) {
  for (int i = 0; i < 10; ++i) add("SMALL", {{"A", {i, 0}}});
  std::vector<placed> many(1000, placed{"W", {0, 0}});
  for (int i = 0; i < 20; ++i) {
    many[0].node.x = i;
    add("LARGE", many);
  }
  const std::vector<bxdb::template_use> templates = census().templates;
  near_options options;
  EXPECT_TRUE(find_near_templates(templates, options).complete);
  EXPECT_EQ(find_near_templates(templates, options).found.size(), 9U + 19U);
  options.most_comparisons = 5000;
  const near_templates some = find_near_templates(templates, options);
  EXPECT_FALSE(some.complete);
  EXPECT_GE(some.found.size(), 9U) << "the small group comes first";
  EXPECT_LT(some.found.size(), 9U + 19U);
}

// Against all pairs, with wires in multisets.
TEST_F(NearTemplates, RandomOnesAreFoundAsByComparingAll) {
  std::mt19937 random(7);
  const auto below = [&random](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  const char* names[] = {"A", "B", "C", "D"};
  for (int i = 0; i < 200; ++i) {
    std::vector<placed> wires;
    for (int k = 3 + below(3); k > 0; --k) wires.push_back({names[below(4)], {below(2), below(2)}});
    add(below(2) == 0 ? "T" : "U", wires, 1 + below(3));
  }
  const std::vector<bxdb::template_use> templates = census().templates;

  using wire_counts = std::map<std::string, std::multiset<std::pair<bx_long, bx_long>>>;
  const auto wires_of = [&](const bxdb::template_use& use) {
    wire_counts wires;
    for (int k = 0; k < use.layout->getnumwires(); ++k) {
      const BX_WIRE& wire = use.layout->getwire(k);
      wires[wire.name].emplace(wire.nodex, wire.nodey);
    }
    return wires;
  };
  const auto apart = [&](wire_counts a, wire_counts b) {
    std::size_t sum = 0;
    for (const char* name : names) {
      std::vector<std::pair<bx_long, bx_long>> left;
      std::vector<std::pair<bx_long, bx_long>> right;
      std::set_difference(a[name].begin(), a[name].end(), b[name].begin(), b[name].end(), std::back_inserter(left));
      std::set_difference(b[name].begin(), b[name].end(), a[name].begin(), a[name].end(), std::back_inserter(right));
      sum += std::max(left.size(), right.size());
    }
    return sum;
  };

  for (std::size_t most : {std::size_t{0}, std::size_t{1}, std::size_t{3}}) {
    std::map<int, std::pair<int, std::size_t>> expected;
    for (const auto& use : templates) {
      std::pair<std::size_t, int> best{most + 1, 0};
      for (const auto& other : templates) {
        if (std::string(use.layout->name) != other.layout->name) continue;
        if (std::pair(-other.instances, other.number) >= std::pair(-use.instances, use.number)) continue;
        best = std::min(best, {apart(wires_of(use), wires_of(other)), other.number});
      }
      if (best.first <= most) expected[use.number] = {best.second, best.first};
    }
    near_options options;
    options.most_wires = most;
    const near_templates near = find_near_templates(templates, options);
    std::map<int, std::pair<int, std::size_t>> found;
    for (const near_miss& miss : near.found) found[miss.number] = {miss.other, miss.wires.size()};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(near.found.size(), found.size());
    EXPECT_GT(found.size(), most == 0 ? 0U : 20U);
  }
}

// ---- the census

TEST(TemplateCensus, ItsRecordsFillTheSectionsOfTheFile) {
  bxdb::device_options options;
  options.names = bxdb::tile_names::unique;
  const auto db = bxdb::generate_device(options);
  qelmodb::intern_root_name(*db);
  db->compress();
  const template_census census = take_census(*db);
  UT_MEMFILE file;
  ASSERT_TRUE(qelmodb::dump(*db, file, qelmodb::form::compressed, qelmodb::content::database));
  std::map<std::string, std::int64_t> sections;
  for (const auto& section : qelmodb::check_bytes(file.bytes(), qelmodb::content::database).sections) {
    sections[section.name] = section.bytes;
  }
  const auto sum = [](const auto& list) {
    return std::accumulate(list.begin(), list.end(), std::int64_t{0},
                           [](std::int64_t so_far, const auto& entry) { return so_far + entry.record_size; });
  };
  EXPECT_GT(census.templates.size(), 100U);
  EXPECT_EQ(sum(census.templates) + 4, sections["templates"]);
  EXPECT_EQ(sum(census.wire_templates) + 2, sections["wire templates"]);
  EXPECT_EQ(census.instances * bxdb::compressed_instance_size, sections["tree"]);
  EXPECT_EQ(6 * (census.columns + census.rows) + 4, sections["columns and rows"]);
}

TEST(TemplateCensus, CountsWhatIsInTheTree) {
  const auto db = bxdb::generate_device({});
  qelmodb::intern_root_name(*db);
  db->compress();
  const template_census census = take_census(*db);
  const qelmodb::tree_size size = qelmodb::measure(*db);
  EXPECT_EQ(census.instances, size.instances);
  EXPECT_EQ(census.wires, size.wires);
  EXPECT_EQ(census.matrices, size.basic_ass);
  EXPECT_EQ(census.matrix_wires, size.basic_ass_wires);
  std::map<int, const BX_INSTANCE*> first;
  bx_walk(*db, [&first](const BX_INSTANCE& inst, bx_long) {
    if (inst.is_basic_ass() == 0) first.emplace(inst.tmpltidx(), &inst);
    return true;
  });
  std::int64_t instances = census.matrices;
  std::int64_t bytes = 0;
  for (const auto& use : census.templates) {
    instances += use.instances;
    bytes += use.binary_size;
    EXPECT_EQ(use.first, first[use.number]);
    EXPECT_STREQ(use.first->name, use.layout->name);
  }
  EXPECT_EQ(instances, size.instances);
  EXPECT_EQ(bytes, 32 * (size.instances - size.basic_ass) + 16 * (size.wires - size.basic_ass_wires));
}

TEST(TemplateCensus, OfADatabaseThatWasNeverCompressedHasNoTemplates) {
  const BX_DB db("r", 0, 0, 9, 9);
  const template_census census = take_census(db);
  EXPECT_EQ(census.instances, 1);
  EXPECT_TRUE(census.templates.empty());
  EXPECT_TRUE(census.wire_templates.empty());
}

}  // namespace
