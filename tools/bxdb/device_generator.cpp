// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "device_generator.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <stdexcept>

#include "qelmoext.h"

namespace bxdb {
namespace {

/// Fills instances of one database that have the same wire names. The first of them interns the names; the
/// others take over the interned strings, which saves a copy and a look-up for each of millions of wires.
class wire_filler {
 public:
  explicit wire_filler(std::vector<planned_wire> wires) : wires_(std::move(wires)) {}

  /// node(wire, x, y) gives the place of a wire. The instance is empty and bound to its database.
  template <class Node>
  void fill(BX_INSTANCE& inst, Node node) {
    if (wires_.empty()) return;
    if (names_.empty()) {
      intern_names(inst, node);
      return;
    }
    inst.wires.getaddr(static_cast<bx_long>(wires_.size()) - 1);
    BX_WIRE* const first = inst.wires.begin();
    for (std::size_t i = 0; i < wires_.size(); ++i) {
      first[i].name = names_[i];
      node(wires_[i], first[i].nodex, first[i].nodey);
    }
  }

 private:
  template <class Node>
  void intern_names(BX_INSTANCE& inst, Node node) {
    inst.wires.a_reserve(static_cast<bx_long>(wires_.size()));
    for (const planned_wire& wire : wires_) {
      BX_WIRE one(wire.name.c_str(), 0, 0);
      node(wire, one.nodex, one.nodey);
      inst.addwire(&one);
    }
    for (const BX_WIRE& wire : inst.wires) names_.push_back(wire.name);
  }

  std::vector<planned_wire> wires_;
  std::vector<char*> names_;
};

std::vector<planned_wire> numbered_wires(const char* stem, std::int64_t count) {
  std::vector<planned_wire> wires;
  wires.reserve(static_cast<std::size_t>(count));
  for (bx_long i = 0; i < count; ++i) wires.push_back({stem + std::to_string(i), wire_run::local, i});
  std::sort(wires.begin(), wires.end(), [](const planned_wire& a, const planned_wire& b) { return a.name < b.name; });
  return wires;
}

const char* leaf_name(tile_kind kind) noexcept {
  switch (kind) {
    case tile_kind::logic:
      return "SLICE";
    case tile_kind::ram:
      return "RAMBLOCK";
    case tile_kind::dsp:
      return "MULTIPLIER";
    default:
      return "PAD";
  }
}

std::int64_t pins_of_leaf(const device_options& options) noexcept {
  return std::clamp<std::int64_t>(options.wires / 8, 1, 8);
}

class device_builder {
 public:
  explicit device_builder(const device_options& options)
      : plan_(options), names_(options.names), pins_(numbered_wires("P", pins_of_leaf(options))) {}

  std::unique_ptr<BX_DB> build() {
    const bx_long pitch = plan_.pitch();
    auto db = std::make_unique<BX_DB>("device", 0, 0, plan_.columns() * pitch, plan_.rows() * pitch);
    const qelmodb::name_batch batch(*db);
    for (const planned_tile& tile : plan_.tiles()) add_tile(*db, tile);
    return db;
  }

 private:
  void add_tile(BX_DB& db, const planned_tile& planned) {
    const bx_long pitch = plan_.pitch();
    const bx_long x = planned.column * pitch;
    const bx_long y = planned.row * pitch;
    const bx_long top = y + planned.height * pitch;
    auto tile = std::make_unique<BX_INSTANCE>(tile_name(planned).c_str(), x, y, x + pitch, top);
    for (bx_long row = 0; row < planned.height; ++row) {
      const bx_long bottom = y + row * pitch;
      tile->addinstance(new BX_INSTANCE("BASIC_ASS", x, bottom, x + pitch, bottom + pitch / 2));
    }
    tile->addinstance(new BX_INSTANCE(leaf_name(planned.kind), x, top - pitch / 2, x + pitch, top));
    BX_INSTANCE& added = *tile;
    db.addinstance(tile.release());
    for (bx_long row = 0; row < planned.height; ++row) {
      fill_matrix(*added.getinstance(row), planned.column, planned.row + row);
    }
    fill_leaf(*added.getinstance(planned.height));
  }

  std::string tile_name(const planned_tile& tile) const {
    const char* kind = to_string(tile.kind);
    if (names_ == tile_names::kind) return kind;
    return std::string(kind) + "_X" + std::to_string(tile.column) + "Y" + std::to_string(tile.row);
  }

  void fill_matrix(BX_INSTANCE& matrix, bx_long column, bx_long row) {
    const std::size_t list = plan_.wire_list_at(column, row);
    std::optional<wire_filler>& filler = matrices_[list];
    if (!filler) filler.emplace(plan_.wire_list(list));
    filler->fill(matrix, [this, column, row](const planned_wire& wire, bx_long& x, bx_long& y) {
      plan_.node(wire, column, row, x, y);
    });
  }

  void fill_leaf(BX_INSTANCE& leaf) {
    pins_.fill(leaf, [&leaf](const planned_wire& wire, bx_long& x, bx_long& y) {
      x = leaf.xmin + 1 + wire.number;
      y = leaf.ymin + 1;
    });
  }

  device_plan plan_;
  tile_names names_;
  std::array<std::optional<wire_filler>, device_plan::most_wire_lists> matrices_;
  wire_filler pins_;
};

constexpr bx_long plain_pitch = 64;

void check_plain(const device_options& options) {
  constexpr std::int64_t most = std::numeric_limits<bx_long>::max();
  if (options.columns < 1 || options.rows < 1) throw std::invalid_argument("a device needs a column and a row");
  if (options.wires < 0 || options.wires > most_device_wires) {
    throw std::invalid_argument(std::to_string(options.wires) + " wires: a tile holds 0 to " +
                                std::to_string(most_device_wires));
  }
  if (options.columns > most / plain_pitch / options.rows) {
    throw std::invalid_argument("coordinates of a stack of this many tiles do not fit into 32 bits");
  }
}

// The tiles stand on top of each other: only instances at the left edge of the root are its own children.
std::unique_ptr<BX_DB> generate_plain(const device_options& options) {
  constexpr bx_long pitch = plain_pitch;
  check_plain(options);
  const auto count = static_cast<bx_long>(options.columns * options.rows);
  auto db = std::make_unique<BX_DB>("plain", 0, 0, pitch, count * pitch);
  const qelmodb::name_batch batch(*db);
  db->instances.a_reserve(count);
  wire_filler wires(numbered_wires("W", options.wires));
  for (bx_long i = 0; i < count; ++i) {
    const std::string name = options.names == tile_names::kind ? "TILE" : "TILE_" + std::to_string(i);
    const bx_long bottom = i * pitch;
    auto* tile = new BX_INSTANCE(name.c_str(), 0, bottom, pitch, bottom + pitch);
    db->addinstance(tile);
    wires.fill(*tile, [&](const planned_wire& wire, bx_long& x, bx_long& y) {
      const std::uint64_t place =
          device_random(options.seed, static_cast<unsigned>(i), static_cast<unsigned>(wire.number));
      x = static_cast<bx_long>(place % pitch);
      y = bottom + static_cast<bx_long>(place / pitch % pitch);
    });
  }
  return db;
}

// Bytes, measured; those of an instance with its place in lists, the private name that it was made with, and what the
// heap needs for each piece.
constexpr double instance_cost = 170.0;
constexpr double unique_name_cost = 80.0;

struct device_count {
  double tiles = 0.0;
  double instances = 0.0;
  double wires = 0.0;
};

device_count count_of_plain(const device_options& options) {
  check_plain(options);
  const double tiles = static_cast<double>(options.columns) * static_cast<double>(options.rows);
  return {tiles, tiles + 1, tiles * static_cast<double>(options.wires)};
}

/// The tiles of a plan, what they hold, and the wires of it.
device_count count_of(const device_plan& plan, std::int64_t pins) {
  std::array<std::size_t, device_plan::most_wire_lists> matrices{};
  device_count count;
  for (const planned_tile& tile : plan.tiles()) {
    count.tiles += 1;
    count.instances += 2 + tile.height;
    for (bx_long row = 0; row < tile.height; ++row) ++matrices[plan.wire_list_at(tile.column, tile.row + row)];
  }
  count.wires = count.tiles * static_cast<double>(pins);
  for (std::size_t list = 0; list < matrices.size(); ++list) {
    if (matrices[list] == 0) continue;
    count.wires += static_cast<double>(matrices[list]) * static_cast<double>(plan.wire_list(list).size());
  }
  return count;
}

/// Counts a part that is large enough to be like the whole, and as much of it as a place of the whole has.
device_count count_of_plan(const device_options& options) {
  constexpr std::int64_t most = 400;
  device_plan::pitch_of(options);
  device_options part = options;
  part.columns = std::min(options.columns, most);
  part.rows = std::min(options.rows, most);
  device_count count = count_of(device_plan(part), pins_of_leaf(options));
  const double times = static_cast<double>(options.columns) / static_cast<double>(part.columns) *
                       (static_cast<double>(options.rows) / static_cast<double>(part.rows));
  // All columns but the first are instances, too, and so is the root.
  return {count.tiles * times, count.instances * times + static_cast<double>(options.columns), count.wires * times};
}

std::vector<bx_long> equal_steps(std::int64_t count, bx_long step) {
  std::vector<bx_long> edges(static_cast<std::size_t>(count) + 1);
  for (std::size_t i = 0; i < edges.size(); ++i) edges[i] = static_cast<bx_long>(i) * step;
  return edges;
}

}  // namespace

std::unique_ptr<BX_DB> generate_device(const device_options& options) {
  return options.profile == device_profile::plain ? generate_plain(options) : device_builder(options).build();
}

device_edges edges_of_device(const device_options& options) {
  if (options.profile == device_profile::plain) {
    check_plain(options);
    return {equal_steps(options.columns * options.rows, plain_pitch), equal_steps(1, plain_pitch)};
  }
  const bx_long pitch = device_plan::pitch_of(options);
  return {equal_steps(options.rows, pitch), equal_steps(options.columns, pitch)};
}

device_size estimate_device(const device_options& options) {
  const device_count count =
      options.profile == device_profile::plain ? count_of_plain(options) : count_of_plan(options);
  const double name = options.names == tile_names::unique ? unique_name_cost : 0.0;
  return {count.instances, count.wires,
          count.instances * instance_cost + count.tiles * name + count.wires * double{sizeof(BX_WIRE)}};
}

}  // namespace bxdb
