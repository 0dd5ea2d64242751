// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Template sets of random devices against the plain ones, and every wire restored.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>

#include "plain_matrix_set.h"
#include "qelmocompress.h"
#include "random_device.h"
#include "template_faults.h"

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

// ---- sets of damaged files

// Damages one map of a set: what it covers, or where its first run begins.
template <class Random>
void damage(BASIC_ASS_TEMPLATE& set, Random random) {
  if (set.num_wire_template == 0) return;
  WIRE_TEMPLATE_SM& wire = set.wire_templates[random(0, set.num_wire_template - 1)];
  const auto cut = [&random](auto& map) {
    if (random(0, 1) == 0) {
      map.size = static_cast<std::uint16_t>(random(0, map.size));
    } else if (!map.ranges.empty()) {
      map.ranges.erase(map.ranges.begin());
    }
  };
  if (wire.num_offset_map == 0 || random(0, 2) == 0) return cut(wire.index_map);
  cut(wire.offset_maps[random(0, wire.num_offset_map - 1)]);
}

// Every wire of a switch matrix by the maps of its template, one after the other.
void restore_plainly(BASIC_ASS_TEMPLATE& set, BX_INSTANCE& inst) {
  const auto list = static_cast<std::size_t>(inst.tmpltidx());
  const std::uint16_t column = set.getcol(inst.xmin);
  const std::uint16_t row = set.getrow(inst.ymin);
  for (int k = 0; k < set.wirelist_numwires[list]; ++k) {
    WIRE_TEMPLATE_SM& wire = set.wire_templates[set.wirelists[list][k]];
    const bool by_column = wire.span_dir == 1;
    const std::uint16_t map = wire.index_map.lookup(by_column ? column : row);
    if (map < wire.num_offset_map) wire.offset_maps[map].lookup(by_column ? row : column);
  }
}

TEST_P(MatrixModel, FaultsOfDamagedSetsAreReportedInTheOrderOfTheTree) {
  test::device_maker maker(GetParam());
  int faults = 0;
  for (int round = 0; round < 1000; ++round) {
    const std::unique_ptr<BX_DB> db = maker.next();
    db->compress();
    BASIC_ASS_TEMPLATE& set = db->get_basic_ass_tmp();
    for (bx_long count = maker.number(1, 3); count > 0; --count) {
      damage(set, [&maker](int from, int to) { return maker.number(from, to); });
    }
    const std::string expected = test::fault_of([&] {
      bx_walk(static_cast<BX_INSTANCE&>(*db), [&set](BX_INSTANCE& inst, bx_long) {
        if (inst.is_basic_ass() != 0) restore_plainly(set, inst);
        return true;
      });
    });
    ASSERT_EQ(test::fault_of([&] { db->restore(); }), expected) << "round " << round;
    faults += expected.empty() ? 0 : 1;
  }
  EXPECT_GT(faults, 300);
}

// ---- builds on sets that earlier builds have filled

// Wires that a device gets between two builds. Names are taken from a few texts. Some have strings of their own, as
// cutting at "$" makes in binary files: builds tell wires by their strings.
class device_changer {
 public:
  explicit device_changer(unsigned seed) : random_(seed) {}

  void change(BX_DB& db) {
    std::vector<BX_INSTANCE*> matrices = matrices_of(db);
    if (number(0, 1) == 0)
      matrices.push_back(test::add(db, "BASIC_ASS", number(-3, 3) * 10, number(-3, 3) * 10, 50, 50));
    if (matrices.empty()) return;
    const int texts = number(3, 9);
    // Mostly the richest matrix becomes richer, and others follow it.
    BX_INSTANCE& rich = **std::max_element(matrices.begin(), matrices.end(), [](BX_INSTANCE* a, BX_INSTANCE* b) {
      return a->getnumwires() < b->getnumwires();
    });
    if (number(0, 4) == 0) rich.wires.empty();
    for (int text = 0; text < texts; ++text) {
      if (number(0, 3) != 0) add(rich, "W" + std::to_string(text));
    }
    for (int count = number(0, 3); count > 0; --count) copy_wires(rich, pick(matrices));
    if (number(0, 2) == 0) give_twin(pick(matrices));
  }

  int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random_); }

  static std::vector<BX_INSTANCE*> matrices_of(BX_DB& db) {
    std::vector<BX_INSTANCE*> matrices;
    bx_walk(static_cast<BX_INSTANCE&>(db), [&matrices](BX_INSTANCE& inst, bx_long depth) {
      if (depth > 0 && std::string(inst.name) == "BASIC_ASS") matrices.push_back(&inst);
      return true;
    });
    return matrices;
  }

 private:
  BX_INSTANCE& pick(const std::vector<BX_INSTANCE*>& matrices) {
    return *matrices[static_cast<std::size_t>(number(0, static_cast<int>(matrices.size()) - 1))];
  }

  void add(BX_INSTANCE& inst, const std::string& name) {
    if (inst.getwireid(name.c_str(), -1) >= 0 && number(0, 9) != 0) return;
    test::add_wire(inst, name.c_str(), inst.xmin + number(0, 1) * 10, inst.ymin + number(0, 1) * 10);
  }

  // Some of the wires of the richest, with its very strings or with those of the database.
  void copy_wires(const BX_INSTANCE& rich, BX_INSTANCE& poor) {
    if (&poor == &rich) return;
    poor.wires.empty();
    const bool same_strings = number(0, 1) == 0;
    for (const BX_WIRE& wire : rich.wires) {
      if (number(0, 1) == 0) continue;
      test::add_wire(poor, wire.name, poor.xmin + number(0, 1) * 10, poor.ymin);
      if (same_strings) poor.wires[poor.getnumwires() - 1].setname(wire.name);
    }
  }

  // Never freed: builds of the whole process remember the addresses.
  void give_twin(BX_INSTANCE& inst) {
    static std::deque<std::string> twins;
    if (inst.getnumwires() == 0) return;
    BX_WIRE& wire = inst.wires[number(0, inst.getnumwires() - 1)];
    wire.setname(twins.emplace_back(wire.name).data());
  }

  std::mt19937 random_;
};

// The first report ends the work, as it ends the process.
class ending_manager : public UT_MSGMAN {
 public:
  void msgdetail(const char* text, int) override { detail_ = text; }
  void msgfatal(const char*, const char*, const char*, short, const char*, bx_long, bx_long) override {
    throw test::fatal_report(detail_);
  }

 private:
  std::string detail_;
};

// How compressing ended: "" when it came to its end, otherwise what was reported.
std::string end_of_compressing(BX_DB& db) {
  const test::environment shown("KRT_SHOW_INTERNAL_ERROR", "");
  ending_manager manager;
  const test::substitute in_place(manager);
  try {
    db.compress();
    return "";
  } catch (const test::fatal_report& report) {
    return report.what();
  }
}

std::string expected_end(test::plain_matrix_set& set, BX_DB& db) {
  if (!set.build(db)) return "cannot find " + set.missing + " wire template\n";
  for (const BX_INSTANCE* inst : device_changer::matrices_of(db)) {
    if (set.list_of(*inst) < 0) return "cannot find wire list map for instance";
  }
  return "";
}

struct ends_met {
  int whole = 0;
  int without_template = 0;
  int without_list = 0;

  void count(const std::string& end) {
    ++(end.empty() ? whole : end.find("template") != std::string::npos ? without_template : without_list);
  }
};

// A device, and its plain set, as long as nothing ended its compressing.
struct device_in_work {
  device_in_work(std::unique_ptr<BX_DB> made, std::map<const char*, int>& known)
      : db(std::move(made)), expected(known) {}
  std::unique_ptr<BX_DB> db;
  test::plain_matrix_set expected;
  bool ended = false;
};

void build_once_more(device_in_work& device, ends_met& met) {
  const bool objected = !qelmodb::compression_objections(*device.db).empty();
  const std::string end = expected_end(device.expected, *device.db);
  ASSERT_EQ(end_of_compressing(*device.db), end);
  EXPECT_EQ(objected, !end.empty());
  met.count(end);
  device.ended = !end.empty();
  if (device.ended) return;
  ASSERT_EQ(device.expected.difference(device.db->get_basic_ass_tmp()), "");
  for (const BX_INSTANCE* inst : device_changer::matrices_of(*device.db)) {
    ASSERT_EQ(inst->tmpltidx(), device.expected.list_of(*inst));
  }
}

TEST_P(MatrixModel, LaterBuildsOverChangedDevicesInTurnAreThePlainOnes) {
  test::device_maker maker(GetParam());
  device_changer changer(GetParam());
  ends_met met;
  for (int round = 0; round < 600; ++round) {
    std::map<const char*, int> known;
    device_in_work devices[] = {{maker.next(), known}, {maker.next(), known}};
    for (int step = 0; step < 5; ++step) {
      for (device_in_work& device : devices) {
        if (device.ended) continue;
        if (step > 0) changer.change(*device.db);
        ASSERT_NO_FATAL_FAILURE(build_once_more(device, met)) << "round " << round << ", step " << step;
      }
    }
  }
  EXPECT_GT(met.whole, 1000);
  EXPECT_GT(met.without_template, 100);
  EXPECT_GT(met.without_list, 10);
}

INSTANTIATE_TEST_SUITE_P(Seeds, MatrixModel, testing::Range(1U, 9U));

}  // namespace
