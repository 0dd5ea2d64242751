// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "device_generator.h"

#include <cstring>
#include <map>
#include <set>
#include <stdexcept>

#include "bxdb_runner.h"
#include "qelmoext.h"

namespace {

using namespace bxdb;

using node = std::pair<bx_long, bx_long>;

/// The switch matrices of a device by the place of their lower left corners.
std::map<node, const BX_INSTANCE*> matrices_of(const BX_DB& db) {
  std::map<node, const BX_INSTANCE*> matrices;
  bx_walk(db, [&](const BX_INSTANCE& inst, bx_long) {
    if (std::strcmp(inst.name, "BASIC_ASS") == 0) matrices[{inst.xmin, inst.ymin}] = &inst;
    return true;
  });
  return matrices;
}

/// How many wires two matrices share a node for, under the same and under another name.
std::pair<int, int> shared(const BX_INSTANCE& a, const BX_INSTANCE& b) {
  std::map<node, std::string> nodes;
  for (const BX_WIRE& wire : a.wires) nodes[{wire.nodex, wire.nodey}] = wire.name;
  std::pair<int, int> found{0, 0};
  for (const BX_WIRE& wire : b.wires) {
    const auto at = nodes.find({wire.nodex, wire.nodey});
    if (at != nodes.end()) ++(at->second == wire.name ? found.first : found.second);
  }
  return found;
}

std::string wire_names(const BX_INSTANCE& inst) {
  std::string names;
  for (const BX_WIRE& wire : inst.wires) names += std::string(wire.name) + " ";
  return names;
}

qelmodb::check_report checked(const BX_DB& db, qelmodb::form as) {
  UT_MEMFILE file;
  EXPECT_TRUE(qelmodb::dump(db, file, as, qelmodb::content::database));
  return qelmodb::check_bytes(file.bytes(), qelmodb::content::database);
}

TEST(DeviceGenerator, ADeviceIsSoundInEachFormWithoutASingleNote) {
  for (const auto profile : {device_profile::device, device_profile::plain}) {
    for (const auto names : {tile_names::kind, tile_names::unique}) {
      device_options options;
      options.profile = profile;
      options.names = names;
      const auto db = generate_device(options);
      for (const auto as : {qelmodb::form::text, qelmodb::form::binary}) {
        const qelmodb::check_report report = checked(*db, as);
        EXPECT_TRUE(report.sound()) << (report.faults.empty() ? "" : report.faults[0].text());
        EXPECT_EQ(report.notes, 0) << (report.faults.empty() ? "" : report.faults[0].text());
        EXPECT_EQ(report.dollar_wires, 0);
      }
    }
  }
}

TEST(DeviceGenerator, WiresRunOnIntoTheNextColumnAndRowUnderTheSameAndUnderAnotherName) {
  const device_options options;
  const device_plan plan(options);
  const auto db = generate_device(options);
  const auto matrices = matrices_of(*db);
  int east_pairs = 0;
  int north_pairs = 0;
  for (const auto& [at, matrix] : matrices) {
    const auto east = matrices.find({at.first + plan.pitch(), at.second});
    const auto north = matrices.find({at.first, at.second + plan.pitch()});
    if (east != matrices.end()) {
      ++east_pairs;
      EXPECT_EQ(shared(*matrix, *east->second), std::make_pair(7, 7));
    }
    if (north != matrices.end()) {
      ++north_pairs;
      EXPECT_EQ(shared(*matrix, *north->second), std::make_pair(7, 7));
    }
  }
  EXPECT_GT(east_pairs, 200);
  EXPECT_GT(north_pairs, 200);
}

TEST(DeviceGenerator, NoMatrixHasTwoWiresAtOneNode) {
  const auto db = generate_device({});
  for (const auto& [at, matrix] : matrices_of(*db)) {
    std::set<node> nodes;
    for (const BX_WIRE& wire : matrix->wires) nodes.emplace(wire.nodex, wire.nodey);
    EXPECT_EQ(nodes.size(), static_cast<std::size_t>(matrix->getnumwires()));
  }
}

TEST(DeviceGenerator, TheRichestMatrixHasAllWireNamesAndBothNeighbours) {
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    device_options options;
    options.columns = 3 + static_cast<std::int64_t>(seed % 7);
    options.rows = 3 + static_cast<std::int64_t>(seed % 5);
    options.seed = seed;
    const device_plan plan(options);
    const auto db = generate_device(options);
    const auto matrices = matrices_of(*db);
    std::set<std::string> all;
    for (const auto& [at, matrix] : matrices) {
      for (const BX_WIRE& wire : matrix->wires) all.insert(wire.name);
    }
    EXPECT_EQ(all.size(), static_cast<std::size_t>(options.wires));
    const BX_INSTANCE& model = *matrices.at({plan.pitch(), plan.pitch()});
    EXPECT_EQ(model.getnumwires(), options.wires) << seed;
    EXPECT_EQ(matrices.count({2 * plan.pitch(), plan.pitch()}), 1U);
    EXPECT_EQ(matrices.count({plan.pitch(), 2 * plan.pitch()}), 1U);
  }
}

TEST(DeviceGenerator, MatricesHaveThreeOrMoreDifferentWireLists) {
  const auto db = generate_device({});
  std::set<std::string> lists;
  for (const auto& [at, matrix] : matrices_of(*db)) lists.insert(wire_names(*matrix));
  EXPECT_GE(lists.size(), 3U);
}

TEST(DeviceGenerator, KindsStandInColumnsAndRamAndDspAreTaller) {
  const device_plan plan{device_options{}};
  std::map<tile_kind, int> tiles;
  std::map<bx_long, std::set<bx_long>> heights;
  for (const planned_tile& tile : plan.tiles()) {
    ++tiles[tile.kind];
    EXPECT_EQ(tile.height, tile.kind == tile_kind::ram ? 2 : tile.kind == tile_kind::dsp ? 3 : 1);
    heights[tile.column].insert(tile.height);
  }
  EXPECT_EQ(tiles.size(), 7U);
  for (const auto& [column, found] : heights) EXPECT_LE(found.size(), 2U);
  EXPECT_GT(tiles[tile_kind::logic], tiles[tile_kind::ram]);
}

TEST(DeviceGenerator, AnIoRingSurroundsTheDeviceAndItsCornersAndSomePlacesAreMissing) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    device_options options;
    options.seed = seed;
    options.columns = 9;
    options.rows = 8;
    const device_plan plan(options);
    int missing = 0;
    for (bx_long c = 1; c < 8; ++c) {
      EXPECT_EQ(plan.kind_at(c, 0), tile_kind::io_south);
      EXPECT_EQ(plan.kind_at(c, 7), tile_kind::io_north);
      for (bx_long r = 1; r < 7; ++r) missing += plan.kind_at(c, r) == tile_kind::none ? 1 : 0;
    }
    for (bx_long r = 1; r < 7; ++r) {
      EXPECT_EQ(plan.kind_at(0, r), tile_kind::io_west);
      EXPECT_EQ(plan.kind_at(8, r), tile_kind::io_east);
    }
    for (const auto& [c, r] : {node{0, 0}, node{8, 0}, node{0, 7}, node{8, 7}}) {
      EXPECT_EQ(plan.kind_at(c, r), tile_kind::none);
    }
    EXPECT_GE(missing, 1) << seed;
    EXPECT_LE(missing, 14) << seed;
  }
}

TEST(DeviceGenerator, TheTreeHoldsExactlyThePlannedTilesAndAMatrixForEachRowOfThem) {
  const device_options options;
  const device_plan plan(options);
  const auto db = generate_device(options);
  std::size_t rows = 0;
  for (const planned_tile& tile : plan.tiles()) rows += static_cast<std::size_t>(tile.height);
  EXPECT_EQ(matrices_of(*db).size(), rows);
  // Root, column instances (all columns but the first), tiles, matrices, one leaf in each tile.
  const auto size = qelmodb::measure(*db);
  EXPECT_EQ(size.instances, static_cast<std::int64_t>(1 + 23 + 2 * plan.tiles().size() + rows));
  EXPECT_EQ(size.depth, 3);
}

TEST(DeviceGenerator, UniqueNamesAreDifferentForAllTilesAndKindNamesAreFew) {
  const auto tile_name_count = [](tile_names names) {
    device_options options;
    options.names = names;
    const auto db = generate_device(options);
    std::set<std::string> found;
    bx_walk(*db, [&](const BX_INSTANCE& inst, bx_long) {
      if (inst.getnuminstances() > 1 && std::strncmp(inst.name, "BXD__", 5) != 0 && inst.name != db->name) {
        found.insert(inst.name);
      }
      return true;
    });
    return found.size();
  };
  EXPECT_EQ(tile_name_count(tile_names::kind), 7U);
  EXPECT_EQ(tile_name_count(tile_names::unique), device_plan(device_options{}).tiles().size());
}

TEST(DeviceGenerator, EqualNamesAreOneStringOfTheNameTable) {
  const auto db = generate_device({});
  std::map<std::string, const char*> strings;
  bx_walk(*db, [&](const BX_INSTANCE& inst, bx_long) {
    for (const BX_WIRE& wire : inst.wires) EXPECT_EQ(strings.emplace(wire.name, wire.name).first->second, wire.name);
    return true;
  });
  EXPECT_TRUE(qelmodb::dump_objections(*db, qelmodb::form::binary, qelmodb::content::database).empty());
}

TEST(DeviceGenerator, ThePlainProfileIsOneLevel) {
  device_options options;
  options.profile = device_profile::plain;
  options.columns = 50;
  options.rows = 40;
  options.wires = 3;
  const auto db = generate_device(options);
  EXPECT_EQ(db->getnuminstances(), 2000);
  const auto size = qelmodb::measure(*db);
  EXPECT_EQ(size.depth, 1);
  EXPECT_EQ(size.wires, 6000);
}

TEST(DeviceGenerator, SizesThatDoNotFitInto32BitsAreRefused) {
  const auto refused = [](std::int64_t columns, std::int64_t rows, std::int64_t wires, device_profile profile) {
    device_options options;
    options.columns = columns;
    options.rows = rows;
    options.wires = wires;
    options.profile = profile;
    EXPECT_THROW(generate_device(options), std::invalid_argument) << columns << " " << rows << " " << wires;
  };
  refused(33554432, 3, 8, device_profile::device);
  refused(3, std::int64_t{1} << 40, 8, device_profile::device);
  refused(2, 9, 8, device_profile::device);
  refused(9, 9, 3, device_profile::device);
  refused(9, 9, 65536, device_profile::device);
  refused(8192, 4096, 1, device_profile::plain);
  refused(std::int64_t{1} << 40, std::int64_t{1} << 40, 1, device_profile::plain);
  refused(0, 1, 1, device_profile::plain);
}

TEST(DeviceGenerator, TheSizeOfADeviceIsToldBeforehand) {
  device_options small;
  device_options wide = small;
  wide.columns = 900;
  wide.rows = 30;
  wide.wires = 8;
  device_options plain = small;
  plain.profile = device_profile::plain;
  plain.names = tile_names::unique;
  for (const device_options& options : {small, wide, plain}) {
    const device_size told = estimate_device(options);
    const qelmodb::tree_size made = qelmodb::measure(*generate_device(options));
    EXPECT_NEAR(told.instances, static_cast<double>(made.instances), 0.01 * static_cast<double>(made.instances));
    EXPECT_NEAR(told.wires, static_cast<double>(made.wires), 0.02 * static_cast<double>(made.wires));
    const double least = 104.0 * static_cast<double>(made.instances) + 24.0 * static_cast<double>(made.wires);
    EXPECT_GT(told.memory, least);
    EXPECT_LT(told.memory, 3 * least);
  }
}

}  // namespace
