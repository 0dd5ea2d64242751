// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Random devices with switch matrices in them.
#pragma once

#include <random>
#include <set>

#include "../database/exposed.h"

namespace test {

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

}  // namespace test
