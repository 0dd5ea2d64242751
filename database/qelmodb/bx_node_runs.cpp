// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_node_runs.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

#include "ut_hash.h"

bx_node_runs::bx_node_runs(std::span<BX_INSTANCE* const> instances, std::size_t wires)
    : instances_(instances), factor_(ut_hash_seed() | 1) {
  choose_box_size();
  runs_.reserve(wires / 8);
}

// Calls take(run) for each run of an instance. No run is longer than what is quickly looked through.
template <class Take>
void bx_node_runs::split(std::uint32_t number, Take take) const {
  constexpr bx_long longest = 256;
  const DARRAY_BX_WIRE& wires = instances_[number]->wires;
  const bx_long count = wires.getcount();
  const bx_ulong size = bx_ulong{1} << shift_;
  for (bx_long first = 0; first < count;) {
    UT_EXTREMA box{wires[first].nodex, wires[first].nodex, wires[first].nodey, wires[first].nodey};
    const bx_long last = count - first > longest ? first + longest : count;
    bx_long i = first + 1;
    for (; i < last; ++i) {
      const bx_long x = wires[i].nodex;
      const bx_long y = wires[i].nodey;
      const UT_EXTREMA wider{std::min(box.xmin, x), std::max(box.xmax, x), std::min(box.ymin, y),
                             std::max(box.ymax, y)};
      const bx_ulong width = static_cast<bx_ulong>(wider.xmax) - static_cast<bx_ulong>(wider.xmin);
      const bx_ulong height = static_cast<bx_ulong>(wider.ymax) - static_cast<bx_ulong>(wider.ymin);
      if ((width | height) >= size) break;
      box = wider;
    }
    take(run{&wires[first], i - first, number, box});
    first = i;
  }
}

// Takes the smallest boxes that leave a run for twelve wires, or one for each instance.
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
    for (const std::uint32_t number : sample) split(number, [&runs](const run&) { ++runs; });
    if (runs <= wires / 12 + sample.size()) break;
  }
}

void bx_node_runs::add(std::uint32_t number) {
  split(number, [this](const run& each) { runs_.push_back(each); });
}

void bx_node_runs::finish() {
  if (runs_.size() >= UINT32_MAX) throw std::length_error("too many wires for an index");
  // Some four runs a place: a small table stays in the cache while runs are filed.
  const int bits = std::clamp(static_cast<int>(std::bit_width(runs_.size())) - 2, 1, 30);
  table_shift_ = 64 - bits;
  begins_.assign((std::size_t{1} << bits) + 1, 0);
  const auto place = [this](const run& each) { return place_of(each.box.xmin >> shift_, each.box.ymin >> shift_); };
  for (const run& each : runs_) ++begins_[place(each) + 1];
  for (std::size_t i = 1; i < begins_.size(); ++i) begins_[i] += begins_[i - 1];
  filed_.resize(runs_.size());
  for (std::size_t i = 0; i < runs_.size(); ++i) filed_[begins_[place(runs_[i])]++] = static_cast<std::uint32_t>(i);
  // Each begin has become its end.
  std::copy_backward(begins_.begin(), begins_.end() - 1, begins_.end());
  begins_.front() = 0;
}

std::size_t bx_node_runs::memory() const noexcept {
  return runs_.size() * sizeof(run) + (begins_.size() + filed_.size()) * sizeof(std::uint32_t);
}
