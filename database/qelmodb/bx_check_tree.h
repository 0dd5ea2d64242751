// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checking a tree of instance records of any form.
#pragma once

#include <algorithm>
#include <vector>

#include "bx_check_coders.h"

/// Checks rectangles, the order of children, and their number. Form has
///   struct record                  what a record holds; a bx_check_record
///   bool head(record&)             reads what stands before the wires, and finds out the name
///   bool wires(record&, start)     reads the wires, or what stands for them; start is where the record begins
///   bool count(label, number&)     reads the number of children
///   int least_size()               the bytes that a record takes at least
template <class Form>
class bx_tree_checker {
 public:
  bx_tree_checker(Form& form, bx_check_context& context) : form_(form), context_(context) {}

  bool run() {
    bool good = enter();
    while (good && !path_.empty()) {
      if (path_.back().left > 0) {
        --path_.back().left;
        good = enter();
      } else {
        path_.pop_back();
        context_.names.pop_back();
      }
    }
    context_.end_section("tree");
    return good;
  }

 private:
  /// An instance whose children are being checked.
  struct open_instance {
    bx_check_record box;
    bx_long left;
    bool has_child = false;
    bx_check_record last_child{};
  };

  bool enter() {
    if (!context_.go_on()) return false;
    const std::size_t start = context_.at();
    typename Form::record inst;
    if (!form_.head(inst)) return false;
    context_.names.push_back(inst.name);
    qelmodb::check_report& report = context_.report;
    ++report.instances;
    report.depth = std::max(report.depth, static_cast<std::int64_t>(path_.size()));
    if (!context_.within_limits(start)) return false;
    check_box(start, inst);
    if (!path_.empty()) check_place(start, inst);
    if (!form_.wires(inst, start) || !context_.within_limits(start)) return false;
    const std::size_t counted_at = context_.at();
    bx_long children = 0;
    if (!form_.count(bx_child_count_label, children)) return false;
    if (!context_.justified(counted_at, bx_child_count_label, children, form_.least_size())) return false;
    path_.push_back({box_of(inst), children});
    return true;
  }

  void check_box(std::size_t start, const bx_check_record& inst) {
    if (inst.xmin > inst.xmax || inst.ymin > inst.ymax) {
      context_.add(
          qelmodb::severity::warning, start,
          neoform("the rectangle (%d, %d) (%d, %d) is not normalised", inst.xmin, inst.ymin, inst.xmax, inst.ymax));
    }
  }

  void check_place(std::size_t start, const bx_check_record& inst) {
    open_instance& parent = path_.back();
    const bx_check_record& last = parent.last_child;
    if (parent.has_child && !(last.xmin < inst.xmin || (last.xmin == inst.xmin && last.ymin <= inst.ymin))) {
      context_.add(qelmodb::severity::warning, start,
                   neoform("the child at (%d, %d) stands behind one at (%d, %d): children are not in position order",
                           inst.xmin, inst.ymin, last.xmin, last.ymin));
    }
    if (!contains(parent.box, inst)) {
      context_.add(qelmodb::severity::note, start, "the rectangle sticks out of its parent's");
    }
    parent.has_child = true;
    parent.last_child = box_of(inst);
  }

  /// What all forms have in common.
  static bx_check_record box_of(const bx_check_record& inst) { return inst; }

  static bool contains(const bx_check_record& outer, const bx_check_record& inner) {
    return outer.xmin <= inner.xmin && inner.xmax <= outer.xmax && outer.ymin <= inner.ymin && inner.ymax <= outer.ymax;
  }

  Form& form_;
  bx_check_context& context_;
  std::vector<open_instance> path_;
};

/// Whether wires of one list follow each other by name.
class bx_wire_order_check {
 public:
  explicit bx_wire_order_check(bx_check_context& context) : context_(context) {}

  /// The wire that begins at start.
  void next(std::size_t start, std::string_view name) {
    context_.wire = name;
    if (has_last_ && name < last_) {
      context_.add(qelmodb::severity::warning, start,
                   "the wire stands behind \"" + bx_printable(last_) + "\": wires are not in name order");
    }
    context_.wire = {};
    has_last_ = true;
    last_ = name;
  }

 private:
  bx_check_context& context_;
  bool has_last_ = false;
  std::string_view last_;
};

/// Instance records with names and wires of their own; in grid files without wires.
template <class Coder>
class bx_instance_form {
 public:
  using record = bx_check_record;

  bx_instance_form(Coder& coder, bx_check_context& context, bool with_wires)
      : coder_(coder), context_(context), with_wires_(with_wires) {}

  bool head(record& inst) { return bx_describe_instance(coder_, inst); }
  bool count(const char* label, bx_long& number) { return coder_.count(label, number); }
  int least_size() const { return bx_least_instance_size(Coder::sizes(), with_wires_); }

  bool wires(const record& /*inst*/, std::size_t /*start*/) {
    if (!with_wires_) return true;
    const std::size_t counted_at = context_.at();
    bx_long count = 0;
    if (!coder_.count(bx_wire_count_label, count)) return false;
    if (!context_.justified(counted_at, bx_wire_count_label, count, bx_least_wire_size(Coder::sizes()))) return false;
    if (!context_.within_limits(counted_at, count)) return false;
    bx_wire_order_check order(context_);
    for (bx_long i = 0; i < count; ++i) {
      const std::size_t start = context_.at();
      bx_check_record wire;
      if (!context_.go_on() || !bx_describe_wire(coder_, wire)) return false;
      order.next(start, wire.name);
      if (wire.name.find('$') != std::string_view::npos) ++context_.report.dollar_wires;
    }
    context_.report.wires += count;
    return true;
  }

 private:
  Coder& coder_;
  bx_check_context& context_;
  bool with_wires_;
};

template <class Coder>
bool bx_check_instances(Coder& coder, bx_check_context& context, bool with_wires) {
  bx_instance_form<Coder> form(coder, context, with_wires);
  return bx_tree_checker(form, context).run();
}
