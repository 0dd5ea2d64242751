// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What a file of some form could not hold.
#include <cstring>
#include <unordered_set>

#include "bx_access.h"
#include "bx_order.h"
#include "bx_path_tracker.h"
#include "qelmocompress.h"
#include "qelmotmplt.h"

namespace qelmodb {
namespace {

/// What one form asks of names.
class name_rules {
 public:
  name_rules(const BX_DB& db, form as, content what)
      : text_(as == form::text),
        by_reference_(!text_ && what == content::database),
        root_name_(as == form::binary ? db.name : nullptr) {
    longest_ = !text_ && what == content::grid ? BX_GRID_NAME_LIMIT : BX_FILE_NAME_LIMIT;
    if (by_reference_) table_.insert(db.names.begin(), db.names.end());
  }

  /// Why the name would not come back; empty when it would.
  std::string reason(const char* name) const {
    if (name == nullptr) return by_reference_ ? "" : "no name; it would come back as \"\"";
    std::string long_name = length_reason(name);
    if (!long_name.empty()) return long_name;
    if (text_ && std::strchr(name, '"') != nullptr) return "name with a double quote, which text files cannot hold";
    if (by_reference_ && name != root_name_ && table_.count(name) == 0) {
      return "name that is not in the database's name table, so that binary files cannot refer to it";
    }
    return "";
  }

  /// Why a name is too long.
  std::string length_reason(const char* name) const {
    const std::size_t length = std::strlen(name);
    if (length <= static_cast<std::size_t>(longest_)) return "";
    return neoform("name of %lld characters; the form holds %d", static_cast<long long>(length), longest_);
  }

 private:
  bool text_;
  bool by_reference_;
  const char* root_name_;  // which a binary file writes beside the table
  bx_long longest_ = 0;
  std::unordered_set<const char*> table_;
};

class objection_finder {
 public:
  objection_finder(const BX_DB& db, form as, content what, std::size_t most)
      : db_(db), what_(what), most_(most), rules_(db, as, what) {}

  /// To be asked last: names that nothing else has are written all the same, and a file with one that is too long
  /// cannot be read.
  void look_at_table() {
    for (const char* name : db_.names) {
      if (name != nullptr && objected_.count(name) == 0) object("name table", rules_.length_reason(name));
    }
  }

  void look_at_tree() {
    bx_path_tracker path;
    bx_walk(db_, [&](const BX_INSTANCE& inst, bx_long depth) {
      path.enter(inst, depth);
      object_to_name(inst.name, [&] { return path.text(); });
      if (what_ == content::grid) return !full();
      const BX_WIRE* last = nullptr;
      for (const BX_WIRE& wire : inst.wires) {
        if (full()) break;
        if (last == nullptr || last->name != wire.name)
          object_to_name(wire.name, [&] { return path.text() + "/" + ut_text(wire.name); });
        last = &wire;
      }
      return !full();
    });
  }

  void look_at_templates() {
    const BASIC_ASS_TEMPLATE& set = *db_.basicasstemplate;
    const auto in_set = [] { return std::string("switch matrices"); };
    object_to_name(set.name, in_set);
    for (int i = 0; i < set.num_wire_template; ++i) object_to_name(set.wire_templates[i].name, in_set);
    const auto in_templates = [] { return std::string("templates"); };
    for (const ASS_TEMPLATE* layout : db_.asstemplates) {
      object_to_name(layout->name, in_templates);
      for (int k = 0; k < layout->getnumwires() && !full(); ++k) object_to_name(layout->getwire(k).name, in_templates);
    }
  }

  void look_at_losses() {
    if (full()) return;
    for (compression_loss& lost : find_compression_losses(db_, most_ - objections_.size()).described) {
      object(std::move(lost.path), std::move(lost.reason));
    }
  }

  void object(std::string place, std::string reason) {
    if (!reason.empty() && !full()) objections_.push_back({std::move(place), std::move(reason)});
  }

  std::vector<objection> take() { return std::move(objections_); }

 private:
  bool full() const noexcept { return objections_.size() >= most_; }

  template <class Place>
  void object_to_name(const char* name, Place place) {
    std::string reason = rules_.reason(name);
    if (reason.empty()) return;
    objected_.insert(name);
    object(place(), std::move(reason));
  }

  const BX_DB& db_;
  const content what_;
  const std::size_t most_;
  const name_rules rules_;
  std::unordered_set<const char*> objected_;
  std::vector<objection> objections_;
};

}  // namespace

std::vector<objection> dump_objections(const BX_DB& db, form as, content what, std::size_t most) {
  objection_finder finder(db, as, what, most);
  if (as != form::compressed) {
    finder.look_at_tree();
    if (as == form::binary && what == content::database) finder.look_at_table();
  } else if (what == content::grid) {
    finder.object("", "there are no compressed grid files");
  } else if (!bx_access::is_compressed(db)) {
    finder.object("", "the database was not compressed");
  } else {
    finder.look_at_templates();
    finder.look_at_table();
    finder.look_at_losses();
  }
  return finder.take();
}

}  // namespace qelmodb
