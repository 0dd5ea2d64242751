// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Template sets of random devices against the plain ones, and every wire restored.
#include <gtest/gtest.h>

#include <algorithm>

#include "plain_matrix_set.h"
#include "random_device.h"

namespace {

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
  test::device_maker maker(GetParam());
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
