// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checking compressed files: the records of the templates, whether all references lead somewhere, and whether restoring
// will find a value for every column and row. Time and memory depend on the bytes, not on the tree that they stand for.
#include "bx_check_compressed.h"

#include "bx_check_templates.h"
#include "bx_check_tree.h"

namespace {

/// The tree, whose instances get names and wires from the templates.
class skeleton_form {
 public:
  struct record : bx_check_record {
    bx_checked_number tmplt;
  };

  skeleton_form(bx_template_checker& coder, bx_check_context& context) : coder_(coder), context_(context) {}

  bool head(record& inst) {
    if (!bx_describe_skeleton(coder_, inst)) return false;
    if (is_matrix(inst)) {
      inst.name = coder_.set().name;
    } else if (index(inst) < coder_.layouts().size()) {
      inst.name = coder_.layouts()[index(inst)].name;
    }
    return true;
  }

  bool wires(const record& inst, std::size_t start) {
    if (is_matrix(inst)) {
      check_matrix(inst, start);
      return true;
    }
    if (index(inst) >= coder_.layouts().size()) {
      return object(inst, neoform("the instance refers to template %zu, but there are %zu", index(inst),
                                  coder_.layouts().size()));
    }
    const bx_checked_layout& layout = coder_.layouts()[index(inst)];
    context_.report.wires += layout.numwires;
    context_.report.dollar_wires += layout.dollar_wires;
    return true;
  }

  bool count(const char* label, bx_long& number) { return coder_.count(label, number); }
  static int least_size() { return bx_least_skeleton_size; }

 private:
  static bool is_matrix(const record& inst) { return (inst.tmplt.value & 0x8000U) != 0; }
  static std::size_t index(const record& inst) { return inst.tmplt.value & 0x7fffU; }

  void check_matrix(const record& inst, std::size_t start) {
    const bx_checked_set& set = coder_.set();
    if (index(inst) >= set.list_sizes.size()) {
      object(inst, neoform("the switch matrix refers to wire list %zu, but there are %zu", index(inst),
                           set.list_sizes.size()));
      return;
    }
    const std::uint16_t wires = set.list_sizes[index(inst)];
    context_.report.wires += wires;
    // Without wires nobody asks for its column and row.
    if (wires == 0) return;
    check_line(set.colmap, start, "column", "x", inst.xmin);
    constexpr std::size_t ymin_offset = 4;
    check_line(set.rowmap, start + ymin_offset, "row", "y", inst.ymin);
  }

  void check_line(const bx_checked_lines& lines, std::size_t at, const char* what, const char* axis, bx_long place) {
    if (lines.coordinates.count(place) != 0) return;
    context_.add(qelmodb::severity::error, at,
                 neoform("no %s of the switch matrices begins at %s = %d", what, axis, place));
  }

  // Where the instance ends is known all the same.
  bool object(const record& inst, std::string message) {
    context_.add(qelmodb::severity::error, inst.tmplt.at, std::move(message));
    return true;
  }

  bx_template_checker& coder_;
  bx_check_context& context_;
};

}  // namespace

bool bx_check_compressed(bx_check_context& context) {
  bx_template_checker coder(context);
  if (!coder.name_table() || !coder.templates()) return false;
  skeleton_form form(coder, context);
  return bx_tree_checker(form, context).run();
}
