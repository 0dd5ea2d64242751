// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_node_runs.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "ut_hash.h"

namespace {

UT_SLAB_ALLOCATOR<std::uint32_t> numbers_in(UT_SLABS& slabs) noexcept {
  return UT_SLAB_ALLOCATOR<std::uint32_t>(slabs);
}

// How many of the wires, from the first on, lie no further than reach from it in either direction.
bx_long count_near(const BX_WIRE* first, const BX_WIRE* end, std::int64_t reach) noexcept {
  const std::int64_t x = std::int64_t{first->nodex} - reach;
  const std::int64_t y = std::int64_t{first->nodey} - reach;
  const auto span = static_cast<std::uint64_t>(2 * reach);
  const BX_WIRE* wire = first + 1;
  for (; wire != end; ++wire) {
    const auto right = static_cast<std::uint64_t>(wire->nodex - x);
    const auto up = static_cast<std::uint64_t>(wire->nodey - y);
    if (right > span || up > span) break;
  }
  return static_cast<bx_long>(wire - first);
}

UT_EXTREMA box_of(const BX_WIRE& wire) noexcept { return {wire.nodex, wire.nodex, wire.nodey, wire.nodey}; }

void widen(UT_EXTREMA& box, const BX_WIRE& wire) noexcept {
  box.xmin = std::min(box.xmin, wire.nodex);
  box.xmax = std::max(box.xmax, wire.nodex);
  box.ymin = std::min(box.ymin, wire.nodey);
  box.ymax = std::max(box.ymax, wire.nodey);
}

UT_EXTREMA box_of(const BX_WIRE* first, bx_long count) noexcept {
  UT_EXTREMA box = box_of(*first);
  for (bx_long i = 1; i < count; ++i) widen(box, first[i]);
  return box;
}

// The same; false when the wires have other names.
bool box_of_named(const BX_WIRE* first, bx_long count, const char* const* names, UT_EXTREMA& box) noexcept {
  std::uintptr_t different = 0;
  box = box_of(*first);
  for (bx_long i = 0; i < count; ++i) {
    different |= reinterpret_cast<std::uintptr_t>(first[i].name) ^ reinterpret_cast<std::uintptr_t>(names[i]);
    widen(box, first[i]);
  }
  return different == 0;
}

}  // namespace

bx_node_runs::bx_node_runs(std::span<BX_INSTANCE* const> instances, std::size_t wires, UT_SLABS& slabs)
    : instances_(instances),
      factor_(ut_hash_seed() | 1),
      habits_(256),
      hashes_(numbers_in(slabs)),
      begins_(numbers_in(slabs)),
      filed_(numbers_in(slabs)) {
  choose_box_size();
  runs_.reserve(wires / 8);
  hashes_.reserve(wires / 8);
}

bool bx_node_runs::fits(const UT_EXTREMA& box) const noexcept {
  const bx_ulong width = static_cast<bx_ulong>(box.xmax) - static_cast<bx_ulong>(box.xmin);
  const bx_ulong height = static_cast<bx_ulong>(box.ymax) - static_cast<bx_ulong>(box.ymin);
  return ((width | height) >> shift_) == 0;
}

// Calls take(wires, count, box) for each run of the wires from first to end, which lie near the first of them. No run
// is longer than what is quickly looked through.
template <class Take>
void bx_node_runs::split(BX_WIRE* first, const BX_WIRE* end, Take take) const {
  const std::int64_t reach = ((std::int64_t{1} << shift_) - 1) / 2;
  while (first != end) {
    const bx_long count = count_near(first, end - first > longest ? first + longest : end, reach);
    take(first, count, box_of(first, count));
    first += count;
  }
}

// Takes the smallest boxes that leave a run for two dozen wires, or one for each instance.
void bx_node_runs::choose_box_size() {
  constexpr std::size_t enough_wires = 8192;
  constexpr int last_shift = 31;
  std::vector<std::uint32_t> sample;
  std::size_t wires = 0;
  // Not only every so many: instances with wires may alternate with others.
  const std::size_t step = instances_.size() / 64 + 1;
  for (std::size_t i = 0; i < instances_.size() && wires < enough_wires; i += step + sample.size() % 3) {
    if (instances_[i]->getnumwires() == 0) continue;
    sample.push_back(static_cast<std::uint32_t>(i));
    wires += static_cast<std::size_t>(instances_[i]->getnumwires());
  }
  for (shift_ = 0; shift_ < last_shift; ++shift_) {
    std::size_t runs = 0;
    for (const std::uint32_t number : sample) {
      const DARRAY_BX_WIRE& each = instances_[number]->wires;
      split(each.begin(), each.end(), [&runs](const BX_WIRE*, bx_long, const UT_EXTREMA&) { ++runs; });
    }
    if (runs <= wires / 24 + sample.size()) break;
  }
  scale_ = std::max(0, shift_ - size_bits);
}

bool bx_node_runs::add_alike(std::uint32_t number, std::uint32_t list, const char* const* names) {
  const habit& usual = habits_[list % habits_.size()];
  if (usual.list != list) return false;
  const std::size_t runs = runs_.size();
  BX_WIRE* first = instances_[number]->wires.begin();
  for (const bx_long count : usual.counts) {
    UT_EXTREMA box{};
    if (!box_of_named(first, count, names, box) || !fits(box)) {
      runs_.resize(runs);
      hashes_.resize(runs);
      return false;
    }
    add_run(first, count, number, box);
    first += count;
    names += count;
  }
  return true;
}

void bx_node_runs::add(std::uint32_t number, std::uint32_t list) {
  const DARRAY_BX_WIRE& wires = instances_[number]->wires;
  if (wires.getcount() == 0) return;
  habit& usual = habits_[list % habits_.size()];
  usual.list = list;
  usual.counts.clear();
  split(wires.begin(), wires.end(), [&](BX_WIRE* at, bx_long count, const UT_EXTREMA& box) {
    add_run(at, count, number, box);
    usual.counts.push_back(count);
  });
}

void bx_node_runs::add_run(BX_WIRE* first, bx_long count, std::uint32_t instance, const UT_EXTREMA& box) {
  constexpr std::uint32_t most = (std::uint32_t{1} << size_bits) - 1;
  const bx_ulong width = (static_cast<bx_ulong>(box.xmax) - static_cast<bx_ulong>(box.xmin)) >> scale_;
  const bx_ulong height = (static_cast<bx_ulong>(box.ymax) - static_cast<bx_ulong>(box.ymin)) >> scale_;
  runs_.push_back({.wires = first,
                   .instance = instance,
                   .xmin = box.xmin,
                   .ymin = box.ymin,
                   .others = static_cast<std::uint32_t>(count - 1) & 0xff,
                   .width = width & most,
                   .height = height & most});
  hashes_.push_back(hash_of(box.xmin >> shift_, box.ymin >> shift_));
}

void bx_node_runs::finish() {
  if (runs_.size() >= UINT32_MAX) throw std::length_error("too many wires for an index");
  // Some four runs a place: a small table stays in the cache while runs are filed.
  const int bits = std::clamp(static_cast<int>(std::bit_width(runs_.size())) - 2, 1, 30);
  table_shift_ = 32 - bits;
  begins_.assign((std::size_t{1} << bits) + 1, 0);
  for (const std::uint32_t hash : hashes_) ++begins_[(hash >> table_shift_) + 1];
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  filed_.resize(runs_.size());
  for (std::size_t i = 0; i < runs_.size(); ++i) {
    filed_[begins_[hashes_[i] >> table_shift_]++] = static_cast<std::uint32_t>(i);
  }
  // Each begin has become its end.
  std::copy_backward(begins_.begin(), begins_.end() - 1, begins_.end());
  begins_.front() = 0;
  habits_ = {};
}

std::size_t bx_node_runs::memory() const noexcept {
  return runs_.size() * sizeof(run) + (hashes_.size() + begins_.size() + filed_.size()) * sizeof(std::uint32_t);
}
