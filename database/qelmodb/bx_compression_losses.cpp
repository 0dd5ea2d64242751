// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a compressed file would give back otherwise than it is: the instances and wires as the templates have them, with
// names as the reader of templates leaves them, against the tree.
#include <cstring>
#include <numeric>
#include <unordered_set>

#include "bx_access.h"
#include "bx_order.h"
#include "bx_path_tracker.h"
#include "bx_restore.h"
#include "qelmocompress.h"

namespace qelmodb {
namespace {

/// The strings that reading a compressed file cuts: all that are names of wires in layouts.
class cut_strings {
 public:
  explicit cut_strings(const std::vector<ASS_TEMPLATE*>& layouts) {
    for (const ASS_TEMPLATE* layout : layouts) {
      for (int k = 0; k < layout->getnumwires(); ++k) {
        const char* name = ut_text(layout->getwire(k).name);
        if (std::strchr(name, '$') != nullptr) strings_.insert(name);
      }
    }
  }

  /// What a name is after reading.
  std::string_view after(const char* name) const {
    const std::string_view text = ut_text(name);
    return strings_.count(name) != 0 ? text.substr(0, text.find('$')) : text;
  }

 private:
  std::unordered_set<const char*> strings_;
};

class loss_finder {
 public:
  loss_finder(const BX_DB& db, std::size_t most) : db_(db), cut_(db.asstemplates), most_(most) {}

  compression_losses find() {
    bx_walk(db_, [this](const BX_INSTANCE& inst, bx_long depth) {
      path_.enter(inst, depth);
      look_at(inst);
      return true;
    });
    return std::move(losses_);
  }

 private:
  void look_at(const BX_INSTANCE& inst) {
    if (!restorer_.select(inst)) return;
    const std::string_view name = cut_.after(restorer_.name());
    if (name != ut_text(inst.name)) record(loss::cut_instance, nullptr, comes_back_as(name));
    for (bx_long k = 0; k < inst.getnumwires(); ++k) {
      if (k < restorer_.wire_count()) {
        look_at(inst.wires[k], k);
      } else {
        record(loss::dropped_wire, &inst.wires[k], "does not come back");
      }
    }
  }

  void look_at(const BX_WIRE& wire, bx_long k) {
    bx_restored_wire restored;
    if (!restorer_.wire(k, restored)) return;
    const std::string_view before = ut_text(wire.name);
    const std::string_view after = cut_.after(restored.name);
    if (after != before) {
      record(after == before.substr(0, before.find('$')) ? loss::cut_wire : loss::renamed_wire, &wire,
             comes_back_as(after));
    }
    if (restored.node.x != wire.nodex || restored.node.y != wire.nodey) {
      record(loss::moved_wire, &wire,
             neoform("comes back at (%d, %d) instead of (%d, %d)", restored.node.x, restored.node.y, wire.nodex,
                     wire.nodey));
    }
  }

  static std::string comes_back_as(std::string_view name) { return "comes back as \"" + std::string(name) + "\""; }

  void record(loss what, const BX_WIRE* wire, std::string reason) {
    std::int64_t& count = losses_.counts[static_cast<int>(what)];
    if (count++ >= static_cast<std::int64_t>(most_)) return;
    std::string path = path_.text();
    if (wire != nullptr) path.append("/").append(ut_text(wire->name));
    losses_.described.push_back({what, std::move(path), std::move(reason)});
  }

  const BX_DB& db_;
  const cut_strings cut_;
  const std::size_t most_;
  bx_restorer restorer_;
  bx_path_tracker path_;
  compression_losses losses_;
};

}  // namespace

compression_losses find_compression_losses(const BX_DB& db, std::size_t most) { return loss_finder(db, most).find(); }

std::int64_t compression_losses::total() const noexcept {
  return std::accumulate(std::begin(counts), std::end(counts), std::int64_t{0});
}

const char* to_string(loss what) noexcept {
  switch (what) {
    case loss::cut_instance:
      return "instances come back with their names cut at the first \"$\"";
    case loss::cut_wire:
      return "wires come back with their names cut at the first \"$\"";
    case loss::renamed_wire:
      return "wires come back with the names of the first instance of the same shape";
    case loss::moved_wire:
      return "wires come back at other nodes";
    case loss::dropped_wire:
      return "wires do not come back";
  }
  return "";
}

void intern_root_name(BX_DB& db) {
  if (db.name != nullptr) db.name = bx_access::names(db).intern(ut_text(db.name));
}

}  // namespace qelmodb
