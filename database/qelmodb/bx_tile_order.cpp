// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "bx_tile_order.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>

#include "ut_arith.h"

namespace {

bool overlap(const bx_tile& a, const bx_tile& b) noexcept {
  if (b.top > a.top) return a.top > b.bottom;
  if (b.top < a.top) return b.top > a.bottom;
  return a.top > b.bottom || b.top > a.bottom;
}

/// A list that takes elements at any place without moving all that stand behind: blocks of limited size.
class block_list {
 public:
  bx_long size() const noexcept { return size_; }

  const bx_tile& operator[](bx_long at) const noexcept {
    const std::size_t block = block_of(at);
    return blocks_[block][static_cast<std::size_t>(at - starts_[block])];
  }

  void insert(bx_long at, const bx_tile& tile) {
    std::size_t block = block_of(at);
    if (blocks_[block].size() == most) {
      split(block);
      block = block_of(at);
    }
    blocks_[block].insert(blocks_[block].begin() + (at - starts_[block]), tile);
    for (std::size_t i = block + 1; i < starts_.size(); ++i) ++starts_[i];
    ++size_;
  }

  void move_to(std::vector<bx_tile>& tiles) const {
    tiles.clear();
    for (const std::vector<bx_tile>& block : blocks_) tiles.insert(tiles.end(), block.begin(), block.end());
  }

 private:
  static constexpr std::size_t most = 1024;

  std::size_t block_of(bx_long at) const noexcept {
    return static_cast<std::size_t>(std::upper_bound(starts_.begin(), starts_.end(), at) - starts_.begin()) - 1;
  }

  void split(std::size_t block) {
    const auto half = static_cast<std::ptrdiff_t>(most / 2);
    const auto after = static_cast<std::ptrdiff_t>(block) + 1;
    std::vector<bx_tile> upper(blocks_[block].begin() + half, blocks_[block].end());
    blocks_[block].erase(blocks_[block].begin() + half, blocks_[block].end());
    blocks_.insert(blocks_.begin() + after, std::move(upper));
    starts_.insert(starts_.begin() + after, starts_[block] + static_cast<bx_long>(half));
  }

  std::vector<std::vector<bx_tile>> blocks_{1};
  std::vector<bx_long> starts_{0};  // index of the first element of each block
  bx_long size_ = 0;
};

/// Whether differences of all pairs of these numbers fit into 32 bits.
template <class Get>
bool differences_fit(const std::vector<bx_tile>& tiles, Get get) {
  std::int64_t least = std::numeric_limits<std::int64_t>::max();
  std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
  for (const bx_tile& tile : tiles) {
    least = std::min<std::int64_t>(least, get(tile));
    greatest = std::max<std::int64_t>(greatest, get(tile));
  }
  return greatest - least <= std::numeric_limits<bx_long>::max();
}

/// The row of each tile, counted from the top; empty when the tiles do not fall into rows.
std::vector<std::uint32_t> rows_of(const std::vector<bx_tile>& tiles) {
  std::vector<std::uint32_t> by_top(tiles.size());
  std::iota(by_top.begin(), by_top.end(), std::uint32_t{0});
  std::sort(by_top.begin(), by_top.end(),
            [&tiles](std::uint32_t a, std::uint32_t b) { return tiles[a].top > tiles[b].top; });
  std::vector<std::uint32_t> rows(tiles.size());
  std::uint32_t row = 0;
  bx_long least_bottom = std::numeric_limits<bx_long>::max();
  bx_long greatest_bottom = least_bottom;
  for (const std::uint32_t at : by_top) {
    const bx_tile& tile = tiles[at];
    if (tile.bottom >= tile.top) return {};
    if (tile.top > greatest_bottom) {
      least_bottom = std::min(least_bottom, tile.bottom);
      greatest_bottom = std::max(greatest_bottom, tile.bottom);
    } else if (tile.top <= least_bottom) {
      ++row;
      least_bottom = tile.bottom;
      greatest_bottom = tile.bottom;
    } else {
      return {};
    }
    rows[at] = row;
  }
  return rows;
}

}  // namespace

bx_long bx_compare_tiles(const bx_tile& a, const bx_tile& b) noexcept {
  return overlap(a, b) ? ut_wrap_sub(a.right, b.right) : ut_wrap_sub(b.top, a.top);
}

void bx_order_tiles(std::vector<bx_tile>& tiles) {
  if (!bx_order_tiles_in_rows(tiles)) bx_order_tiles_one_by_one(tiles);
}

bool bx_order_tiles_in_rows(std::vector<bx_tile>& tiles) {
  if (tiles.empty()) return true;
  if (!differences_fit(tiles, [](const bx_tile& tile) { return tile.right; })) return false;
  if (!differences_fit(tiles, [](const bx_tile& tile) { return tile.top; })) return false;
  const std::vector<std::uint32_t> rows = rows_of(tiles);
  if (rows.empty()) return false;
  std::vector<std::uint32_t> order(tiles.size());
  std::iota(order.begin(), order.end(), std::uint32_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
    return rows[a] != rows[b] ? rows[a] < rows[b] : tiles[a].right < tiles[b].right;
  });
  std::vector<bx_tile> ordered;
  ordered.reserve(tiles.size());
  for (const std::uint32_t at : order) ordered.push_back(tiles[at]);
  tiles.swap(ordered);
  return true;
}

void bx_order_tiles_one_by_one(std::vector<bx_tile>& tiles) {
  block_list list;
  for (const bx_tile& tile : tiles) {
    // The probes are those of UT_DARRAY::a_sortadd, which defines the order.
    bx_long lo = 0;
    bx_long hi = list.size();
    while (lo < hi) {
      const bx_long mid = lo + (hi - lo) / 2;
      if (bx_compare_tiles(tile, list[mid]) < 0) {
        hi = mid;
      } else {
        lo = mid + 1;
      }
    }
    list.insert(lo, tile);
  }
  list.move_to(tiles);
}
