// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_restore.h"

#include <algorithm>
#include <vector>

#include "bx_load_storage.h"
#include "bx_matrix_nodes.h"
#include "bx_walk.h"
#include "qelmotmplt.h"
#include "ut_arith.h"

namespace {

/// Indices of a range map, from up to but not including to.
struct index_span {
  std::uint16_t from = 0;
  std::uint16_t to = 0;

  static index_span of(std::uint16_t i) noexcept { return {i, static_cast<std::uint16_t>(i + 1)}; }
  bool covers(std::uint16_t i) const noexcept { return from <= i && i < to; }
};

/// A run of a range map, or a part of one.
template <class T>
struct known_run {
  index_span where;
  T value{};
};

/// The runs of a range map in one piece of memory.
template <class T>
class flat_map {
 public:
  explicit flat_map(const RANGE_MAP<T>& map) : map_(map) {
    starts_.reserve(map.ranges.size());
    values_.reserve(map.ranges.size());
    for (const auto& [start, value] : map.ranges) {
      starts_.push_back(start);
      values_.push_back(value);
    }
  }

  /// The run of an index. Where there is none, which is reported, one that covers nothing.
  known_run<T> run_at(std::uint16_t i) const {
    const auto after = std::upper_bound(starts_.begin(), starts_.end(), i);
    if (i >= map_.size || after == starts_.begin()) return {{}, map_.lookup(i)};
    const std::uint16_t to = after != starts_.end() ? std::min(*after, map_.size) : map_.size;
    return {{*std::prev(after), to}, values_[static_cast<std::size_t>(after - starts_.begin()) - 1]};
  }

 private:
  const RANGE_MAP<T>& map_;
  std::vector<std::uint16_t> starts_;
  std::vector<T> values_;
};

/// The values of several range maps of one size for every index, where runs are so short that searching them would cost
/// more than the memory. Values lie in the order in which they are asked for.
template <class T>
class value_table {
 public:
  /// along_first: for an index and then by map; otherwise for a map and then by index.
  value_table(const RANGE_MAP<T>* maps, std::size_t count, bool along_first) {
    if (count == 0 || !are_dense(maps, count)) return;
    size_ = maps[0].size;
    along_step_ = along_first ? count : 1;
    map_step_ = along_first ? 1 : size_;
    values_.resize(count * size_);
    for (std::size_t k = 0; k < count; ++k) fill(maps[k].ranges, values_.data() + k * map_step_);
  }

  /// The place of an index in any of the maps; false when they are no table, or do not have the index.
  bool covers(std::uint16_t along) const noexcept { return along < size_; }

  const T& at(std::size_t map, std::uint16_t along) const noexcept {
    return values_[map * map_step_ + along * along_step_];
  }

 private:
  static constexpr std::size_t short_run = 8;

  static bool are_dense(const RANGE_MAP<T>* maps, std::size_t count) {
    std::size_t runs = 0;
    for (std::size_t k = 0; k < count; ++k) {
      // Others come from damaged files.
      if (maps[k].ranges.empty() || maps[k].ranges.begin()->first != 0 || maps[k].size != maps[0].size) return false;
      runs += maps[k].ranges.size();
    }
    return runs * short_run >= count * maps[0].size;
  }

  void fill(const std::map<std::uint16_t, T>& runs, T* values) {
    for (auto run = runs.begin(); run != runs.end(); ++run) {
      const auto next = std::next(run);
      const std::size_t end = next != runs.end() ? std::min<std::size_t>(next->first, size_) : size_;
      for (std::size_t i = run->first; i < end; ++i) values[i * along_step_] = run->second;
    }
  }

  std::size_t size_ = 0;
  std::size_t map_step_ = 0;
  std::size_t along_step_ = 0;
  std::vector<T> values_;
};

/// A wire template ready for many lookups. Switch matrices are met column by column: a template that runs along rows is
/// asked for another row each time, and comes back to the same row a column further. So each offset map has the run
/// that was last found in it, which lies apart from the map: those of all templates should stay in the cache.
class flat_template {
 public:
  explicit flat_template(const WIRE_TEMPLATE_SM& of)
      : wire_(of),
        lines_(&of.index_map, 1, false),
        index_map_(of.index_map),
        table_(of.offset_maps, of.num_offset_map, of.span_dir != 1),
        last_offsets_(of.num_offset_map) {
    offset_maps_.reserve(of.num_offset_map);
    if (table_.covers(0)) return;
    for (int k = 0; k < of.num_offset_map; ++k) offset_maps_.emplace_back(of.offset_maps[k]);
  }

  const WIRE_TEMPLATE_SM& wire() const noexcept { return wire_; }

  /// Which offset map a line has, and for what other lines that is known.
  known_run<std::uint16_t> map_of(std::uint16_t line) const {
    if (lines_.covers(line)) return {index_span::of(line), lines_.at(0, line)};
    return index_map_.run_at(line);
  }

  bool has_map(std::uint16_t map) const noexcept { return map < last_offsets_.size(); }

  known_run<BX_POINT> offset_at(std::uint16_t map, std::uint16_t along) {
    if (table_.covers(along)) return {index_span::of(along), table_.at(map, along)};
    if (offset_maps_.empty()) return {{}, wire_.offset_maps[map].lookup(along)};  // which reports
    known_run<BX_POINT>& last = last_offsets_[map];
    if (!last.where.covers(along)) last = offset_maps_[map].run_at(along);
    return last;
  }

 private:
  const WIRE_TEMPLATE_SM& wire_;
  value_table<std::uint16_t> lines_;
  flat_map<std::uint16_t> index_map_;
  value_table<BX_POINT> table_;
  std::vector<known_run<BX_POINT>> last_offsets_;
  std::vector<flat_map<BX_POINT>> offset_maps_;
};

/// The offset that was last found for a wire template, and the columns and rows where it holds: for the next switch
/// matrix, too, when the template runs along columns. Those of all templates lie together.
struct strand {
  explicit strand(flat_template& of) : tmplt(&of), name(of.wire().name), origin(of.wire()) {}

  bool holds_at(std::uint16_t column, std::uint16_t row) const noexcept {
    return columns.covers(column) && rows.covers(row);
  }

  /// Looks the offset of a place up. False when the index map leads beyond the offset maps.
  bool move_to(std::uint16_t column, std::uint16_t row) {
    const bool by_column = tmplt->wire().span_dir == 1;
    const known_run<std::uint16_t> lines = tmplt->map_of(by_column ? column : row);
    if (!tmplt->has_map(lines.value)) return false;
    const known_run<BX_POINT> places = tmplt->offset_at(lines.value, by_column ? row : column);
    columns = by_column ? lines.where : places.where;
    rows = by_column ? places.where : lines.where;
    offset = places.value;
    return true;
  }

  flat_template* tmplt;
  char* name;
  bx_node_origin origin;
  index_span columns;
  index_span rows;
  BX_POINT offset;
};

}  // namespace

/// A set ready for millions of lookups.
class bx_restorer::flat_set {
 public:
  explicit flat_set(BASIC_ASS_TEMPLATE& set) : set_(set) {
    wires_.reserve(set.num_wire_template);
    strands_.reserve(set.num_wire_template);
    for (int i = 0; i < set.num_wire_template; ++i) {
      wires_.emplace_back(set.wire_templates[i]);
      strands_.emplace_back(wires_.back());
    }
  }

  /// Takes up a place.
  void go_to(std::uint16_t column, std::uint16_t row) noexcept {
    column_ = column;
    row_ = row;
    has_corner_ = false;
  }

  bool wire(std::size_t number, bx_restored_wire& restored) {
    if (number >= strands_.size()) return false;
    strand& known = strands_[number];
    if (!known.holds_at(column_, row_) && !known.move_to(column_, row_)) return false;
    restored = {known.name, known.origin.node(corner(), known.offset)};
    return true;
  }

 private:
  BX_POINT corner() {
    if (!has_corner_) corner_ = set_.corner_at(column_, row_);
    has_corner_ = true;
    return corner_;
  }

  BASIC_ASS_TEMPLATE& set_;
  std::vector<flat_template> wires_;
  std::vector<strand> strands_;
  std::uint16_t column_ = NO_INDEX;
  std::uint16_t row_ = NO_INDEX;
  bool has_corner_ = false;
  BX_POINT corner_;
};

bx_restorer::bx_restorer() = default;
bx_restorer::~bx_restorer() = default;

// As a rule there is one set.
bx_restorer::flat_set& bx_restorer::flat_set_of(BASIC_ASS_TEMPLATE& set) {
  if (last_set_ != &set) {
    std::unique_ptr<flat_set>& flat = flat_sets_[&set];
    if (flat == nullptr) flat = std::make_unique<flat_set>(set);
    last_flat_ = flat.get();
    last_set_ = &set;
  }
  return *last_flat_;
}

bool bx_restorer::select(const BX_INSTANCE& inst) {
  if (inst.top == nullptr) return false;
  const BX_DB& db = *inst.top;
  const int number = inst.tmpltidx();
  inst_ = &inst;
  if (inst.is_basic_ass() == 0) {
    if (static_cast<std::size_t>(number) >= db.asstemplates.size()) return false;
    layout_ = db.asstemplates[static_cast<std::size_t>(number)];
    name_ = layout_->name;
    wire_count_ = layout_->getnumwires();
    return true;
  }
  if (db.basicasstemplate == nullptr || number >= db.basicasstemplate->num_wirelist) return false;
  BASIC_ASS_TEMPLATE& set = *db.basicasstemplate;
  layout_ = nullptr;
  matrices_ = &flat_set_of(set);
  list_ = set.wirelists[number];
  matrices_->go_to(set.getcol(inst.xmin), set.getrow(inst.ymin));
  name_ = set.name;
  wire_count_ = set.wirelist_numwires[number];
  return true;
}

bool bx_restorer::wire(int k, bx_restored_wire& restored) const {
  if (layout_ == nullptr) return matrices_->wire(list_[k], restored);
  const BX_WIRE& relative = layout_->getwire(k);
  restored.name = relative.name;
  restored.node = {ut_wrap_add(inst_->xmin, relative.nodex), ut_wrap_add(inst_->ymin, relative.nodey)};
  return true;
}

namespace {

bool restore_instance(bx_restorer& restorer, BX_INSTANCE& inst) {
  inst.nameborrowed = true;
  if (!restorer.select(inst)) return false;
  inst.name = restorer.name();
  const int count = restorer.wire_count();
  if (count > inst.getnumwires()) bx_reserve_wires(inst, count, count);
  bool good = true;
  for (int k = 0; k < count; ++k) {
    BX_WIRE& wire = *inst.wires.getaddr(k);
    bx_restored_wire restored;
    if (!restorer.wire(k, restored)) {
      good = false;
      continue;
    }
    wire.name = restored.name;
    wire.nameborrowed = true;
    wire.nodex = restored.node.x;
    wire.nodey = restored.node.y;
  }
  return good;
}

}  // namespace

bool bx_restore_tree(BX_INSTANCE& root, const std::function<bool()>& go_on) {
  constexpr std::int64_t between = 1 << 16;  // instances and wires
  bx_restorer restorer;
  bool good = true;
  std::int64_t done = 0;
  const bool whole = bx_walk(root, [&](BX_INSTANCE& inst, bx_long /*depth*/) {
    good &= restore_instance(restorer, inst);
    done += 1 + inst.getnumwires();
    if (done < between) return true;
    done = 0;
    return go_on();
  });
  return good && whole;
}

void BX_INSTANCE::restore() {
  bx_restore_tree(*this, [] { return true; });
}
