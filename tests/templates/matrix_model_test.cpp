// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Template sets of random devices against the plain ones, and every wire restored.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "../database/exposed.h"
#include "plain_matrix_set.h"

namespace {

using test::add;
using test::add_wire;

/// Random switch matrices in a random tree. The richest has all wire names.
class device_maker {
 public:
  explicit device_maker(unsigned seed) : random_(seed) {}

  std::unique_ptr<BX_DB> next() {
    auto db = std::make_unique<BX_DB>("D", 0, 0, 1, 1);
    pick_lines(columns_, number(1, 5));
    pick_lines(rows_, number(1, 5));
    const bx_long missing = number(0, 40);
    wires_ = number(0, 8);
    spread_ = number(0, 3) == 0 ? 12 : number(0, 1);
    std::vector<BX_INSTANCE*> made;
    for (const bx_long x : columns_) {
      for (const bx_long y : rows_) {
        if (number(0, 99) >= missing) made.push_back(put(*db, x, y));
      }
    }
    if (made.empty()) return db;
    // Anywhere, corners included, stands the one that has them all.
    const std::size_t richest = random_() % made.size();
    for (std::size_t i = 0; i < made.size(); ++i) add_wires(*made[i], i == richest ? 100 : number(30, 100));
    return db;
  }

  bx_long number(bx_long from, bx_long to) { return std::uniform_int_distribution<bx_long>(from, to)(random_); }

 private:
  void pick_lines(std::vector<bx_long>& lines, bx_long count) {
    const bx_long extremes[] = {INT32_MIN, INT32_MIN + 1, -7, -1, 0, 3, 1000, INT32_MAX - 1, INT32_MAX};
    std::set<bx_long> chosen;
    const bool extreme = number(0, 9) == 0;
    while (static_cast<bx_long>(chosen.size()) < count) {
      chosen.insert(extreme ? extremes[number(0, 8)] : number(-10, 10) * 10);
    }
    lines.assign(chosen.begin(), chosen.end());
  }

  BX_INSTANCE* put(BX_DB& db, bx_long x, bx_long y) {
    if (number(0, 2) == 0) return add(db, "BASIC_ASS", x, y, x, y);
    return add(*add(db, "TILE", x, y, x, y), "BASIC_ASS", x, y, x, y);
  }

  bx_long near(const std::vector<bx_long>& lines, bx_long line) {
    // On or beside a line, so that neighbours share nodes often.
    const bx_long base = number(0, 1) == 0 ? line : lines[static_cast<std::size_t>(number(0, 99)) % lines.size()];
    return static_cast<bx_long>(static_cast<bx_ulong>(base) + static_cast<bx_ulong>(number(0, spread_)));
  }

  void add_wires(BX_INSTANCE& inst, bx_long share_of_100) {
    for (bx_long w = 0; w < wires_; ++w) {
      if (number(0, 99) >= share_of_100) continue;
      const std::string name = "W" + std::to_string(w);
      add_wire(inst, name.c_str(), near(columns_, inst.xmin), near(rows_, inst.ymin));
    }
  }

  std::mt19937 random_;
  std::vector<bx_long> columns_;
  std::vector<bx_long> rows_;
  bx_long wires_ = 0;
  bx_long spread_ = 0;
};

struct known_node {
  BX_INSTANCE* inst;
  std::string name;
  bx_long x;
  bx_long y;
};

std::vector<known_node> nodes_of(BX_DB& db) {
  std::vector<known_node> nodes;
  bx_walk(static_cast<BX_INSTANCE&>(db), [&](BX_INSTANCE& inst, bx_long) {
    for (const BX_WIRE& wire : inst.wires) nodes.push_back({&inst, wire.name, wire.nodex, wire.nodey});
    return true;
  });
  return nodes;
}

void forget_wires(BX_DB& db) {
  bx_walk(static_cast<BX_INSTANCE&>(db), [](BX_INSTANCE& inst, bx_long) {
    inst.wires.empty();
    return true;
  });
}

bool same(const known_node& a, const known_node& b) {
  return a.inst == b.inst && a.name == b.name && a.x == b.x && a.y == b.y;
}

class MatrixModel : public testing::TestWithParam<unsigned> {};

TEST_P(MatrixModel, SetsOfRandomDevicesAreThePlainOnesAndGiveBackEveryWire) {
  device_maker maker(GetParam());
  std::size_t spans[3] = {0, 0, 0};
  std::size_t absolutes = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::unique_ptr<BX_DB> db = maker.next();
    std::map<const char*, int> known;
    const test::plain_matrix_set expected(*db, known);
    db->compress();
    BASIC_ASS_TEMPLATE& set = db->get_basic_ass_tmp();
    ASSERT_EQ(expected.difference(set), "") << "round " << round;
    for (const auto& wire : expected.templates) {
      ++spans[wire.span_dir];
      absolutes += wire.absolute ? 1U : 0U;
    }
    const std::vector<known_node> before = nodes_of(*db);
    forget_wires(*db);
    db->restore();
    const std::vector<known_node> after = nodes_of(*db);
    ASSERT_TRUE(std::equal(before.begin(), before.end(), after.begin(), after.end(), same)) << "round " << round;
    // Once more, one by one, by place.
    for (const known_node& node : after) {
      const int list = node.inst->tmpltidx();
      const auto j = static_cast<int>(node.inst->getwireid(node.name.c_str(), -1));
      const BX_POINT found = set.restore_wire({node.inst->xmin, node.inst->ymin}, list, j);
      ASSERT_EQ(found, BX_POINT(node.x, node.y));
      ASSERT_STREQ(set.getwirename_sm(list, j), node.name.c_str());
    }
  }
  EXPECT_GT(spans[0], 500U);
  EXPECT_GT(spans[1], 500U);
  EXPECT_GT(spans[2], 500U);
  EXPECT_GT(absolutes, 200U);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MatrixModel, testing::Range(1U, 9U));

}  // namespace
