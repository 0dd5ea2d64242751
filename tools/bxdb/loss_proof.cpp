// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include "loss_proof.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "bx_walk.h"
#include "ut_string.h"

namespace bxdb {
namespace {

using qelmodb::loss;

struct placed_instance {
  const BX_INSTANCE* inst;
  bx_long depth;
};

/// With their depths the instances in this order tell the shape of the tree.
std::vector<placed_instance> in_order(const BX_DB& db) {
  std::vector<placed_instance> all;
  bx_walk(db, [&all](const BX_INSTANCE& inst, bx_long depth) {
    all.push_back({&inst, depth});
    return true;
  });
  return all;
}

std::string_view name_of(const BX_INSTANCE& inst) noexcept { return ut_text(inst.name); }
std::string_view name_of(const BX_WIRE& wire) noexcept { return ut_text(wire.name); }
std::string_view cut(std::string_view name) noexcept { return name.substr(0, name.find('$')); }

class loss_counter {
 public:
  /// False when what came back cannot be explained by losses.
  bool compare(const BX_DB& original, const BX_DB& back) {
    const std::vector<placed_instance> before = in_order(original);
    const std::vector<placed_instance> after = in_order(back);
    return std::equal(before.begin(), before.end(), after.begin(), after.end(),
                      [this](const placed_instance& a, const placed_instance& b) {
                        return a.depth == b.depth && compare_instances(*a.inst, *b.inst);
                      });
  }

  bool agrees_with(const qelmodb::compression_losses& losses) const {
    return std::equal(std::begin(counts_), std::end(counts_), std::begin(losses.counts));
  }

 private:
  void count(loss what, std::int64_t more = 1) noexcept { counts_[static_cast<int>(what)] += more; }

  bool compare_instances(const BX_INSTANCE& a, const BX_INSTANCE& b) {
    if (a.xmin != b.xmin || a.ymin != b.ymin || a.xmax != b.xmax || a.ymax != b.ymax) return false;
    if (name_of(a) != name_of(b)) {
      if (cut(name_of(a)) != name_of(b)) return false;
      count(loss::cut_instance);
    }
    const bx_long kept = b.getnumwires();
    if (kept > a.getnumwires()) return false;
    count(loss::dropped_wire, a.getnumwires() - kept);
    for (bx_long k = 0; k < kept; ++k) compare_wires(a.wires[k], b.wires[k]);
    return true;
  }

  void compare_wires(const BX_WIRE& a, const BX_WIRE& b) noexcept {
    if (name_of(a) != name_of(b)) count(cut(name_of(a)) == name_of(b) ? loss::cut_wire : loss::renamed_wire);
    if (a.nodex != b.nodex || a.nodey != b.nodey) count(loss::moved_wire);
  }

  std::int64_t counts_[qelmodb::loss_count] = {};
};

}  // namespace

bool comes_back_as_announced(const BX_DB& original, const BX_DB& back, const qelmodb::compression_losses& losses) {
  loss_counter counter;
  return counter.compare(original, back) && counter.agrees_with(losses);
}

}  // namespace bxdb
