// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files on streams, and searches, comparisons and measures over whole trees.
#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_set>

#include "bx_access.h"
#include "bx_files.h"
#include "bx_order.h"
#include "bx_path_tracker.h"
#include "qelmoext.h"
#include "ut_hash.h"

#ifndef QELMODB_VERSION
#error "the build defines QELMODB_VERSION"
#endif

namespace {

template <class Matches>
std::vector<qelmodb::found_instance> collect_instances(const BX_INSTANCE& root, Matches matches) {
  std::vector<qelmodb::found_instance> found;
  bx_path_tracker path;
  bx_walk(const_cast<BX_INSTANCE&>(root), [&](BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    if (matches(inst)) found.push_back({&inst, path.text()});
    return true;
  });
  return found;
}

bool same_wires(const DARRAY_BX_WIRE& a, const DARRAY_BX_WIRE& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const BX_WIRE& left, const BX_WIRE& right) {
    return left.nodex == right.nodex && left.nodey == right.nodey && bx_compare_names(left.name, right.name) == 0;
  });
}

bool same_instance(const BX_INSTANCE& a, const BX_INSTANCE& b, qelmodb::content what) {
  return a.xmin == b.xmin && a.xmax == b.xmax && a.ymin == b.ymin && a.ymax == b.ymax &&
         bx_compare_names(a.name, b.name) == 0 && (what == qelmodb::content::grid || same_wires(a.wires, b.wires));
}

std::vector<const BX_INSTANCE*> children_of(const BX_INSTANCE& inst) {
  std::vector<const BX_INSTANCE*> children;
  std::copy_if(inst.instances.begin(), inst.instances.end(), std::back_inserter(children),
               [](const BX_INSTANCE* child) { return child != nullptr; });
  return children;
}

/// Reports what goes through a stream while it lives. Without a report it leaves a client's own watcher alone.
class stream_watch {
 public:
  stream_watch(UT_STREAM& file, const char* step, std::int64_t whole, const qelmodb::work_options& options)
      : file_(file), set_(options.report != nullptr) {
    if (!set_) return;
    file_.watch([step, whole, &options](std::int64_t done) { return options.report({step, done, whole}); });
  }
  stream_watch(const stream_watch&) = delete;
  stream_watch& operator=(const stream_watch&) = delete;
  ~stream_watch() {
    if (set_) file_.watch({});
  }

 private:
  UT_STREAM& file_;
  bool set_;
};

// 0 for a stream that does not tell.
std::int64_t length_of(const UT_STREAM& file) {
  const std::int64_t left = file.bytesleft();
  return left != INT64_MAX ? left : 0;
}

}  // namespace

namespace qelmodb {

const char* version() noexcept { return QELMODB_VERSION; }

bool load(BX_DB& db, UT_PTRFILE& file, content what, const work_options& options) {
  const stream_watch watch(file, "reading", length_of(file), options);
  char letter = '\0';
  if (!bx_read_first_line(file, letter)) return false;
  return what == content::grid ? bx_read_grid(db, file, letter) : bx_read_database(db, file, letter);
}

bool dump(const BX_DB& db, UT_PTRFILE& file, form as, content what, const work_options& options) {
  const stream_watch watch(file, "writing", 0, options);
  const bool ascii = as == form::text;
  bool written = false;
  if (as == form::compressed) {
    // Writing changes nothing; the operation is one that clients' classes had always declared without const.
    written = what == content::database && bx_write_compressed(const_cast<BX_DB&>(db), file);
  } else {
    written = what == content::grid ? bx_write_grid(db, file, ascii) : bx_write_database(db, file, ascii);
  }
  return written && file.flush();
}

std::vector<found_instance> find_instances(const BX_INSTANCE& root, const char* name) {
  return collect_instances(root, [name](const BX_INSTANCE& inst) { return bx_compare_names(inst.name, name) == 0; });
}

std::vector<found_instance> instances_at(const BX_INSTANCE& root, bx_long x, bx_long y) {
  return collect_instances(root, [x, y](const BX_INSTANCE& inst) {
    return inst.xmin <= x && x <= inst.xmax && inst.ymin <= y && y <= inst.ymax;
  });
}

std::vector<found_wire> find_wires(const BX_INSTANCE& root, const char* name) {
  std::vector<found_wire> found;
  bx_path_tracker path;
  bx_walk(const_cast<BX_INSTANCE&>(root), [&](BX_INSTANCE& inst, bx_long depth) {
    path.enter(inst, depth);
    for (BX_WIRE& wire : inst.wires) {
      if (bx_compare_names(wire.name, name) == 0) found.push_back({&wire, &inst, path.text()});
    }
    return true;
  });
  return found;
}

std::string path_of(const BX_INSTANCE& root, const BX_INSTANCE& inst) {
  bx_path_tracker path;
  const bool missing = bx_walk(root, [&](const BX_INSTANCE& here, bx_long depth) {
    path.enter(here, depth);
    return &here != &inst;
  });
  return missing ? std::string() : path.whole_text();
}

void child_order_changed() noexcept { ++bx_left_edges_moved; }

tree_size measure(const BX_INSTANCE& root) {
  tree_size size;
  size.box = static_cast<const UT_EXTREMA&>(root);
  std::unordered_set<const char*> seen;
  std::unordered_set<std::string_view, ut_text_hash> texts;
  const auto count_name = [&](const char* name) {
    if (name != nullptr && seen.insert(name).second) texts.insert(name);
  };
  bx_walk(root, [&](const BX_INSTANCE& inst, bx_long depth) {
    ++size.instances;
    size.wires += inst.getnumwires();
    size.depth = std::max<std::int64_t>(size.depth, depth);
    size.box.xmin = std::min(size.box.xmin, inst.xmin);
    size.box.xmax = std::max(size.box.xmax, inst.xmax);
    size.box.ymin = std::min(size.box.ymin, inst.ymin);
    size.box.ymax = std::max(size.box.ymax, inst.ymax);
    if (bx_compare_names(inst.name, "BASIC_ASS") == 0) {
      ++size.basic_ass;
      size.basic_ass_wires += inst.getnumwires();
    }
    count_name(inst.name);
    for (const BX_WIRE& wire : inst.wires) count_name(wire.name);
    return true;
  });
  size.names = static_cast<std::int64_t>(texts.size());
  return size;
}

bool same_tree(const BX_INSTANCE& a, const BX_INSTANCE& b, content what) {
  std::vector<std::pair<const BX_INSTANCE*, const BX_INSTANCE*>> pending{{&a, &b}};
  while (!pending.empty()) {
    const auto [left, right] = pending.back();
    pending.pop_back();
    if (!same_instance(*left, *right, what)) return false;
    const std::vector<const BX_INSTANCE*> left_children = children_of(*left);
    const std::vector<const BX_INSTANCE*> right_children = children_of(*right);
    if (left_children.size() != right_children.size()) return false;
    for (std::size_t i = 0; i < left_children.size(); ++i) pending.emplace_back(left_children[i], right_children[i]);
  }
  return true;
}

}  // namespace qelmodb
