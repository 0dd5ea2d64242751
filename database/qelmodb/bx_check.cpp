// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Checking the bytes of a file: the same walk over the same record descriptions as loading, without
// building anything.
#include <algorithm>
#include <string>
#include <vector>

#include "bx_check_coders.h"
#include "ut_filemanager.h"

using qelmodb::check_report;
using qelmodb::content;
using qelmodb::form;
using qelmodb::severity;

namespace {

/// An instance whose children are being checked.
struct open_instance {
  bx_check_record box;
  bx_long left;
  bool has_child = false;
  bx_check_record last_child{};
};

bool contains(const bx_check_record& outer, const bx_check_record& inner) {
  return outer.xmin <= inner.xmin && inner.xmax <= outer.xmax && outer.ymin <= inner.ymin && inner.ymax <= outer.ymax;
}

bool in_child_order(const bx_check_record& a, const bx_check_record& b) {
  return a.xmin < b.xmin || (a.xmin == b.xmin && a.ymin <= b.ymin);
}

template <class Coder>
class tree_checker {
 public:
  tree_checker(Coder& coder, bx_check_context& context, bool with_wires)
      : coder_(coder), context_(context), with_wires_(with_wires) {}

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
    return good;
  }

 private:
  bool enter() {
    const std::size_t start = context_.at();
    bx_check_record inst;
    if (!bx_describe_instance(coder_, inst)) return false;
    context_.names.push_back(inst.name);
    check_report& report = context_.report;
    ++report.instances;
    report.depth = std::max(report.depth, static_cast<std::int64_t>(path_.size()));
    check_box(start, inst);
    if (!path_.empty()) check_place(start, inst);
    if (with_wires_ && !wires()) return false;
    bx_long children = 0;
    if (!counted(bx_child_count_label, bx_least_instance_size(Coder::sizes(), with_wires_), children)) return false;
    path_.push_back({inst, children});
    return true;
  }

  void check_box(std::size_t start, const bx_check_record& inst) {
    if (inst.xmin > inst.xmax || inst.ymin > inst.ymax) {
      context_.add(
          severity::warning, start,
          neoform("the rectangle (%d, %d) (%d, %d) is not normalised", inst.xmin, inst.ymin, inst.xmax, inst.ymax));
    }
  }

  void check_place(std::size_t start, const bx_check_record& inst) {
    open_instance& parent = path_.back();
    if (parent.has_child && !in_child_order(parent.last_child, inst)) {
      context_.add(severity::warning, start,
                   neoform("the child at (%d, %d) stands behind one at (%d, %d): children are not in position order",
                           inst.xmin, inst.ymin, parent.last_child.xmin, parent.last_child.ymin));
    }
    if (!contains(parent.box, inst)) context_.add(severity::note, start, "the rectangle sticks out of its parent's");
    parent.has_child = true;
    parent.last_child = inst;
  }

  /// Reads a count and holds it against the bytes that are left.
  bool counted(const char* label, int least_size, bx_long& count) {
    const std::size_t start = context_.at();
    if (!coder_.count(label, count)) return false;
    if (count < 0) return context_.fail(start, neoform("the %s is %d", label, count));
    if (static_cast<std::size_t>(count) > context_.left() / static_cast<std::size_t>(least_size)) {
      return context_.fail(start,
                           neoform("the %s is %d, but the %lld bytes left hold at most %lld such records", label, count,
                                   static_cast<long long>(context_.left()),
                                   static_cast<long long>(context_.left() / static_cast<std::size_t>(least_size))));
    }
    return true;
  }

  bool wires() {
    bx_long count = 0;
    if (!counted(bx_wire_count_label, bx_least_wire_size(Coder::sizes()), count)) return false;
    std::string_view last;
    for (bx_long i = 0; i < count; ++i) {
      const std::size_t start = context_.at();
      bx_check_record record;
      if (!bx_describe_wire(coder_, record)) return false;
      context_.wire = record.name;
      if (record.name.find('$') != std::string_view::npos) ++context_.report.dollar_wires;
      if (i > 0 && record.name < last) {
        context_.add(severity::warning, start,
                     "the wire stands behind \"" + std::string(last) + "\": wires are not in name order");
      }
      context_.wire = {};
      last = record.name;
    }
    context_.report.wires += count;
    return true;
  }

  Coder& coder_;
  bx_check_context& context_;
  bool with_wires_;
  std::vector<open_instance> path_;
};

template <class Coder>
bool check_tree(Coder& coder, bx_check_context& context, bool with_wires) {
  return tree_checker<Coder>(coder, context, with_wires).run();
}

// Moves behind the first line and gives the letter of the form, NUL when there is none.
bool first_line(bx_check_context& context, char& letter) {
  const std::string_view bytes = context.rest();
  const std::string_view magic = bx_magic;
  if (bytes.substr(0, magic.size()) != magic) {
    return context.fail(0, "not a BX_DB file: expected \"BX_DB:\", found " + context.found(0));
  }
  const std::size_t end = bytes.find('\n');
  if (end == std::string_view::npos) return context.fail(bytes.size(), "the first line has no end");
  letter = bytes[magic.size()];
  if (letter == '\n' || letter == '\r') letter = '\0';
  context.advance(end + 1);
  return true;
}

void check_end(bx_check_context& context, bool text) {
  const std::string_view rest = context.rest();
  const std::size_t blank = text ? rest.find_first_not_of(" \t\r\n") : 0;
  if (rest.empty() || blank == std::string_view::npos) return;
  context.fail(context.at() + blank, neoform("%lld bytes stand behind the last record, which nothing reads",
                                             static_cast<long long>(rest.size() - blank)));
}

form form_of(char letter, content what) {
  if (letter == bx_text_letter) return form::text;
  return letter == bx_compressed_letter && what == content::database ? form::compressed : form::binary;
}

bool check_records(bx_check_context& context, form as, content what) {
  const bool with_wires = what == content::database;
  if (as == form::compressed) return context.fail(6, "compressed databases are not supported by this version");
  if (as == form::text) {
    context.counts_lines = true;
    bx_text_checker coder(context);
    return check_tree(coder, context, with_wires);
  }
  if (!with_wires) {
    bx_binary_grid_checker coder(context);
    return check_tree(coder, context, false);
  }
  bx_binary_checker coder(context);
  return coder.name_table() && check_tree(coder, context, true);
}

}  // namespace

namespace qelmodb {

check_report check_bytes(std::string_view bytes, content what, const check_options& options) {
  bx_check_context context(bytes, options);
  context.report.file_content = what;
  char letter = '\0';
  if (first_line(context, letter)) {
    const form as = form_of(letter, what);
    context.report.file_form = as;
    if (as == form::binary && letter != bx_binary_letter) {
      context.add(severity::note, sizeof bx_magic - 1, "the letter of the form is unknown; the file is read as binary");
    }
    if (check_records(context, as, what)) check_end(context, as == form::text);
  }
  std::stable_sort(context.report.faults.begin(), context.report.faults.end(),
                   [](const fault& a, const fault& b) { return a.offset < b.offset; });
  return std::move(context.report);
}

check_report check_file(const char* filename, content what, const check_options& options) {
  UT_PTRFILE file(UT_READ);
  if (ut_file->add_ofile(filename, UT_READ, &file, false) == nullptr) {
    bx_check_context context({}, options);
    context.report.file_content = what;
    context.fail(0, ut_file->geterror());
    return std::move(context.report);
  }
  std::string bytes;
  for (;;) {
    std::size_t available = 0;
    const char* block = file.peek(1, available);
    if (available == 0) break;
    bytes.append(block, available);
    file.consume(available);
  }
  ut_file->rm_ofile(&file);
  return check_bytes(bytes, what, options);
}

content detect_content(std::string_view bytes) {
  const std::size_t line = bytes.find('\n');
  const check_options none{0};
  if (bytes.substr(0, 7) == "BX_DB:A" && line != std::string_view::npos) {
    // Header, a count, and then: a wire or another count in a database, an instance or the end in a grid.
    std::string_view rest = bytes.substr(line + 1);
    for (int skipped = 0; skipped < 2; ++skipped) {
      const std::size_t end = rest.find('\n');
      rest = end != std::string_view::npos ? rest.substr(end + 1) : std::string_view();
    }
    const std::string_view next = rest.substr(
        rest.find_first_not_of(" \t\r\n") == std::string_view::npos ? rest.size() : rest.find_first_not_of(" \t\r\n"));
    return next.empty() || next.substr(0, 12) == "BX_INSTANCE:" ? content::grid : content::database;
  }
  if (bytes.substr(0, 7) == "BX_DB:C") return content::database;
  const bool grid =
      !check_bytes(bytes, content::database, none).loadable() && check_bytes(bytes, content::grid, none).loadable();
  return grid ? content::grid : content::database;
}

std::string fault::text() const {
  std::string place = line > 0 ? neoform("line %lld: ", static_cast<long long>(line))
                               : neoform("byte %lld: ", static_cast<long long>(offset));
  place += message;
  if (!path.empty()) place += " [" + path + "]";
  return place;
}

const char* to_string(content what) noexcept { return what == content::grid ? "grid" : "database"; }

const char* to_string(form what) noexcept {
  switch (what) {
    case form::text:
      return "text";
    case form::binary:
      return "binary";
    case form::compressed:
      return "compressed";
  }
  return "";
}

const char* to_string(severity level) noexcept {
  switch (level) {
    case severity::error:
      return "error";
    case severity::warning:
      return "warning";
    case severity::note:
      return "note";
  }
  return "";
}

}  // namespace qelmodb
