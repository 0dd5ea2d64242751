// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files written down field by field, and faults planted in the fields: where one begins, how long it is, and which
// path leads to it. Knows nothing of the library's record descriptions.
#pragma once

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "record_bytes.h"

namespace test {

/// What can be wrong with a field, and how that is told.
enum class sort {
  // the first line
  magic,
  letter,
  first_end,
  // text
  label,
  label_gap,
  open_quote,
  name,
  close_quote,
  point_gap,
  open_point,
  number,
  comma,
  number_gap,
  close_point,
  record_end,
  count_end,
  // text and binary
  wire_count,
  child_count,
  // binary
  name_count,
  address,
  stored_name,
  nul,
  root_reference,
  reference,
  coordinate,
  // the templates of compressed files
  list_count,
  list_size,
  list_entry,
  wire_template_count,
  flag,
  direction,
  map_size,
  run_count,
  first_start,
  next_start,
  map_number,
  offset,
  offset_map_count,
  line_count,
  line_place,
  line_number,
  template_count,
  layout_wire_count,
  codes,
  step,
  matrix_x,
  matrix_y,
  template_reference,
};

struct field {
  sort kind;
  std::string what;
  std::size_t at;
  std::size_t size;
  std::string path;  // names down to what is in hand there
  bx_long value;     // of counts and the like
  int least;         // of counts: the bytes that each of what they count takes at least

  std::size_t end() const { return at + size; }
};

/// An instance record.
struct tree_record {
  std::size_t at;
  std::optional<std::size_t> parent;
  std::string path;  // down to the instance itself
  bx_long children;
};

class described_file {
 public:
  explicit described_file(content what) : what(what) {}

  std::string bytes;
  std::vector<field> fields;
  std::vector<tree_record> records;
  content what;

  void add(sort kind, const std::string& name, const std::string& text, bx_long value = 0, int least = 0) {
    fields.push_back({kind, name, bytes.size(), text.size(), path(), value, least});
    bytes += text;
  }
  void add_first_line(char letter) {
    add(sort::magic, "BX_DB:", "BX_DB:");
    add(sort::letter, "letter of the form", std::string(1, letter));
    add(sort::first_end, "end of the first line", "\n");
  }

  /// To be called before the first field of an instance record, behind those of its head, and behind its children.
  void begin_record(bx_long children) {
    const bool is_root = open_.empty();
    records.push_back({bytes.size(), is_root ? std::nullopt : std::optional(open_.back()), "", children});
  }
  void enter_record(const std::string& name) {
    tree_record& record = records.back();
    record.path = open_.empty() ? name : path() + "/" + name;
    open_.push_back(records.size() - 1);
  }
  void leave_record() { open_.pop_back(); }

  std::string path() const { return open_.empty() ? "" : records[open_.back()].path; }

  std::string with(const field& changed, const std::string& instead) const {
    return bytes.substr(0, changed.at) + instead + bytes.substr(changed.end());
  }

 private:
  std::vector<std::size_t> open_;
};

/// A tree to describe files of.
struct plain_wire {
  std::string name;
  bx_long x, y;
};

struct plain_instance {
  std::string name;
  box edges;
  std::vector<plain_wire> wires;
  std::vector<plain_instance> children;
};

/// The longest that text files and name tables can hold.
inline const std::string longest_name(99, 'R');

/// Four levels, wires at most of them, names that other instances' wires have, too, without characters and with "$". No
/// number has a byte that is a line end.
inline plain_instance rich_tree() {
  const plain_instance deep{"DEEP", {1, 3, 2, 4}, {{"W1", 7, 8}}, {}};
  const plain_instance matrix{
      "BASIC_ASS", {1, 2, 3, 4}, {{"CLK", 0, 3}, {"W1", 1, 2}, {"W2", -2147483647 - 1, 2147483647}}, {deep}};
  const plain_instance logic{"LOGIC_1", {1, 1, 9, 9}, {{"IN$a$b", -3, 4}, {"OUT", 5, 6}}, {matrix}};
  const plain_instance nameless{"", {2, 20, 9, 29}, {{"W2", 3, 4}}, {}};
  const plain_instance twin{"LOGIC_1", {2, 20, 9, 29}, {}, {}};
  const plain_instance deep_too{"DEEP", {11, 3, 12, 4}, {}, {}};
  const plain_instance nameless_too{"", {12, 20, 19, 29}, {{"W2", 3, 4}}, {}};
  const plain_instance block{
      longest_name, {11, 1, 19, 29}, {{"CLK", 1, 1}, {"IN$a$b", 1, 1}}, {deep_too, nameless_too}};
  return {"TOP", {-1, -9, 100, 50}, {{"CLK", 0, 0}, {"RST", 3, -300}}, {logic, nameless, twin, block}};
}

/// Where, and in which words, the checker has to tell a fault.
struct told {
  std::size_t place;
  std::string words;
  std::string path;
};

/// The first count before the end of a cut file that promises more than what is left, if any. Widths are those of the
/// count fields with what ends them, which text has.
inline std::optional<told> unjustified_count(const described_file& file, std::size_t length) {
  for (std::size_t i = 0; i < file.fields.size(); ++i) {
    const field& count = file.fields[i];
    if (count.least == 0) continue;
    const bool ends_apart = i + 1 < file.fields.size() && file.fields[i + 1].kind == sort::count_end;
    const std::size_t end = ends_apart ? file.fields[i + 1].end() : count.end();
    if (end > length) return std::nullopt;
    if (static_cast<std::size_t>(count.value) * static_cast<std::size_t>(count.least) > length - end) {
      return told{count.at, "bytes left hold at most", count.path};
    }
  }
  return std::nullopt;
}

/// Plants faults in all fields of a file, cuts it at every byte, and holds what the checker says against what it has to
/// say.
class fault_planter {
 public:
  explicit fault_planter(const described_file& file) : file_(file), planted_(file.fields.size()) {}
  fault_planter(const fault_planter&) = delete;
  fault_planter& operator=(const fault_planter&) = delete;
  virtual ~fault_planter() = default;

  void plant_all() {
    for (at_ = 0; at_ < file_.fields.size(); ++at_) {
      plant(here());
      plant_cuts(here());
    }
  }

  /// What was planted in fields so far, by how well the place is known; and what no fault was.
  int exact() const { return exact_; }
  int vague() const { return vague_; }
  int accepted() const { return accepted_; }
  int cuts() const { return cuts_; }

  /// The fields in which nothing that was planted is a fault.
  std::set<std::string> harmless() const {
    std::set<std::string> found;
    for (std::size_t i = 0; i < planted_.size(); ++i) {
      if (planted_[i].faults == 0) found.insert(file_.fields[i].what);
      EXPECT_GT(planted_[i].faults + planted_[i].others, 0) << file_.fields[i].what << " at " << file_.fields[i].at;
    }
    return found;
  }

 protected:
  /// Plants all faults of the field in hand.
  virtual void plant(const field& f) = 0;

  /// Whether a file that ends at a length, which is within the field in hand, lacks nothing that matters.
  virtual bool is_whole(std::size_t /*length*/) const { return false; }

  /// What a file lacks that ends at a length, which is within the field in hand.
  virtual told lacking(const field& f, std::size_t length) const = 0;

  const described_file& file() const { return file_; }

  /// The field in hand, and those around it.
  std::size_t at() const { return at_; }
  const field& here() const { return file_.fields[at_]; }
  const field& before(std::size_t fields) const { return file_.fields.at(at_ - fields); }
  const field& behind(std::size_t fields) const { return file_.fields.at(at_ + fields); }

  /// The first error must be just where it is told to be.
  void fault(const field& in, const std::string& changed, const told& expected) {
    ++exact_;
    ++planted(in).faults;
    expect_told(in, changed, expected);
  }
  void fault(const field& in, const std::string& changed, std::size_t place, const std::string& words) {
    fault(in, changed, {place, words, in.path});
  }

  /// What follows the field is read as something else, up to a place that does not depend on the field alone: the
  /// first error stands at the start given or behind it.
  void misleading(const field& in, const std::string& changed, std::size_t start) {
    ++vague_;
    ++planted(in).faults;
    const std::optional<qelmodb::fault> found = first_error(in, changed);
    if (!found) return;
    EXPECT_GE(found->offset, static_cast<std::int64_t>(start)) << about(in, changed) << found->text();
    EXPECT_LE(found->offset, static_cast<std::int64_t>(changed.size())) << about(in, changed) << found->text();
  }

  /// No error, and it loads. Warnings and notes are not looked at.
  void fine(const field& in, const std::string& changed) {
    ++accepted_;
    ++planted(in).others;
    const qelmodb::check_report report = qelmodb::check_bytes(changed, file_.what);
    EXPECT_TRUE(report.loadable()) << about(in, changed) << report.faults[0].text();
    if (!report.loadable()) return;
    BX_DB db;
    EXPECT_TRUE(loaded(db, changed, file_.what)) << about(in, changed);
  }

  /// Every character of what begins all files.
  void plant_magic(const field& f) {
    for (std::size_t i = 0; i < f.size; ++i) {
      std::string changed = file_.bytes;
      changed[i] = '?';
      fault(f, changed, 0, "not a BX_DB file: expected \"BX_DB:\", found ");
    }
  }

 private:
  struct counts {
    int faults = 0;
    int others = 0;
  };

  /// The file ends before each byte of the field.
  void plant_cuts(const field& f) {
    for (std::size_t length = f.at; length < f.end(); ++length) {
      if (is_whole(length)) {
        fine(f, file_.bytes.substr(0, length));
        continue;
      }
      const std::optional<told> count = unjustified_count(file_, length);
      ++cuts_;
      expect_told(f, file_.bytes.substr(0, length), count ? *count : lacking(f, length));
    }
  }

  counts& planted(const field& in) { return planted_[static_cast<std::size_t>(&in - file_.fields.data())]; }

  void expect_told(const field& in, const std::string& changed, const told& expected) {
    const std::optional<qelmodb::fault> found = first_error(in, changed);
    if (!found) return;
    EXPECT_EQ(found->offset, static_cast<std::int64_t>(expected.place)) << about(in, changed) << found->text();
    EXPECT_EQ(found->path, expected.path) << about(in, changed) << found->text();
    EXPECT_NE(found->message.find(expected.words), std::string::npos)
        << about(in, changed) << found->text() << "\nlacks: " << expected.words;
  }

  std::optional<qelmodb::fault> first_error(const field& in, const std::string& changed) const {
    const qelmodb::check_report report = qelmodb::check_bytes(changed, file_.what);
    EXPECT_FALSE(report.loadable()) << about(in, changed);
    const auto before = [](const qelmodb::fault& a, const qelmodb::fault& b) { return a.offset < b.offset; };
    EXPECT_TRUE(std::is_sorted(report.faults.begin(), report.faults.end(), before)) << about(in, changed);
    for (const qelmodb::fault& found : report.faults) {
      if (found.level != qelmodb::severity::error) continue;
      EXPECT_EQ(found.line, line_of(changed, found.offset)) << about(in, changed) << found.text();
      return found;
    }
    return std::nullopt;
  }

  /// Lines count from 1 in text files, once the first line has told that it is one.
  static std::int64_t line_of(const std::string& bytes, std::int64_t offset) {
    const std::size_t first = bytes.find('\n');
    if (bytes.substr(0, 7) != "BX_DB:A" || first == std::string::npos) return 0;
    return 1 + std::count(bytes.begin(), bytes.begin() + offset, '\n');
  }

  static std::string about(const field& in, const std::string& changed) {
    return in.what + " at byte " + std::to_string(in.at) + (in.path.empty() ? "" : " in " + in.path) + ", file of " +
           std::to_string(changed.size()) + " bytes\n";
  }

  const described_file& file_;
  std::vector<counts> planted_;
  std::size_t at_ = 0;
  int exact_ = 0;
  int vague_ = 0;
  int accepted_ = 0;
  int cuts_ = 0;
};

/// One more than the bytes behind a place can hold.
inline bx_long one_too_many(const described_file& file, std::size_t behind, int least) {
  return static_cast<bx_long>((file.bytes.size() - behind) / static_cast<std::size_t>(least)) + 1;
}

/// With one child more than there is, each record takes the one behind its own as a child, until a record is missing at
/// the end of the file; an ancestor of the first one is short of it.
inline told missing_child(const described_file& file, std::size_t record, const std::string& words) {
  const std::vector<tree_record>& all = file.records;
  std::size_t here = record;
  for (;;) {
    // The record behind all that are below this one.
    std::size_t next = here + 1;
    const auto is_below = [&](std::size_t inner) {
      std::optional<std::size_t> up = all[inner].parent;
      while (up && *up != here) up = all[*up].parent;
      return up.has_value();
    };
    while (next < all.size() && is_below(next)) ++next;
    if (next == all.size()) return {file.bytes.size(), words, all[here].path};
    here = *all[next].parent;
  }
}

/// With one child less than there is, the tree ends where only one more record was to come.
inline told extra_child(const described_file& file, std::size_t record) {
  bx_long open = 1;
  for (std::size_t i = 0; i < file.records.size(); ++i) {
    if (i > record && open == 1) return {file.records[i].at, "stand behind the last record", ""};
    open += file.records[i].children - 1;
  }
  ADD_FAILURE() << "no record is left over";
  return {};
}

}  // namespace test
