// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What binary and compressed files have in common: their name tables, references, rectangles and child counts, and the
// faults that are planted there.
#pragma once

#include <algorithm>

#include "file_fields.h"

namespace test {

/// The name table of a file and the references to it. Addresses are such that whatever else part of one is taken for is
/// conspicuous: none of their bytes is 0, and their halves are large numbers.
class name_fields {
 public:
  static constexpr std::uint64_t unknown = 0x7f3a5c21'61a1b2f1;

  explicit name_fields(described_file& file) : file_(file) {}

  /// Adds one name that nothing refers to.
  void add_table(const std::vector<std::string>& names) {
    names_ = names;
    names_.push_back("of nothing");
    const auto count = static_cast<bx_long>(names_.size());
    constexpr int least_entry = 8 + 1;
    file_.add(sort::name_count, "name count", test::number(count), count, least_entry);
    for (std::size_t i = 0; i < names_.size(); ++i) {
      file_.add(sort::address, "address of " + names_[i], test::reference(address(i)), static_cast<bx_long>(i));
      file_.add(sort::name, "name", names_[i]);
      file_.add(sort::nul, "NUL", std::string(1, '\0'));
    }
  }

  void add_reference(const std::string& name, sort kind = sort::reference) {
    const auto found = std::find(names_.begin(), names_.end(), name);
    ASSERT_NE(found, names_.end()) << name;
    const auto index = static_cast<std::size_t>(found - names_.begin());
    file_.add(kind, "reference to " + name, test::reference(address(index)), static_cast<bx_long>(index));
  }

  std::size_t count() const { return names_.size(); }
  static std::uint64_t address(std::size_t index) { return 0x7f3a5c21'71a1b211 + 16 * index; }

 private:
  described_file& file_;
  std::vector<std::string> names_;
};

inline void add_box(described_file& file, const box& edges) {
  file.add(sort::coordinate, "xmin", number(edges.xmin));
  file.add(sort::coordinate, "ymin", number(edges.ymin));
  file.add(sort::coordinate, "xmax", number(edges.xmax));
  file.add(sort::coordinate, "ymax", number(edges.ymax));
}

/// Plants the faults that all binary forms can have.
class binary_fault_planter : public fault_planter {
 public:
  /// What is said where an instance record is missing at the end of the file.
  binary_fault_planter(const described_file& file, const name_fields& names, std::string missing_record)
      : fault_planter(file),
        unused_(name_fields::address(names.count() - 1)),
        missing_record_(std::move(missing_record)) {}

 protected:
  /// False for fields that only some forms have.
  bool plant_common(const field& f) {
    switch (f.kind) {
      case sort::magic:
        plant_magic(f);
        return true;
      case sort::first_end:
        // There is no other line end.
        fault(f, file().with(f, "x"), file().bytes.size(), "the first line has no end");
        fine(f, file().with(f, "\r\n"));
        return true;
      case sort::name_count:
        plant_count(f);
        // Part of the tree is taken for a name, or a name for part of the tree.
        misleading(f, file().with(f, number(f.value + 1)), f.end());
        misleading(f, file().with(f, number(f.value - 1)), f.end());
        return true;
      case sort::address:
        plant_address(f);
        return true;
      case sort::name:
        fault(f, file().with(f, std::string(100, 'n')), f.at, "the name is longer than 99 characters");
        for (const std::string& text : {std::string(99, 'n'), std::string(), std::string("a \"quote\"\n")}) {
          fine(f, file().with(f, text));
        }
        return true;
      case sort::nul:
        // The name goes on in what follows it.
        misleading(f, file().with(f, "x"), before(1).at);
        misleading(f, file().with(f, ""), before(1).at);
        return true;
      case sort::root_reference:
        fine(f, file().with(f, reference(name_fields::unknown)));
        fine(f, file().with(f, reference(0)));
        return true;
      case sort::reference:
        fault(f, file().with(f, reference(name_fields::unknown)), f.at,
              "the name reference 7F3A5C2161A1B2F1 is not in the name table");
        fault(f, file().with(f, reference(1)), f.at, "the name reference 0000000000000001 is not in the name table");
        fine(f, file().with(f, reference(0)));
        return true;
      case sort::coordinate:
        for (const bx_long value : {-2147483647 - 1, -1, 0, 1, 2147483647}) fine(f, file().with(f, number(value)));
        return true;
      case sort::child_count:
        plant_count(f);
        plant_child_count_off(f);
        return true;
      default:
        return false;
    }
  }

  /// A count of 4 bytes.
  void plant_count(const field& f) {
    for (const bx_long value : {-1, -2147483647 - 1}) {
      fault(f, file().with(f, number(value)), f.at, "the " + f.what + " is " + std::to_string(value));
    }
    for (const bx_long value : {one_too_many(file(), f.end(), f.least), 2147483647}) {
      fault(f, file().with(f, number(value)), f.at, "the " + f.what + " is " + std::to_string(value) + ", but the ");
    }
  }

  told lacking(const field& f, std::size_t length) const override {
    switch (f.kind) {
      case sort::magic:
        return {0, "not a BX_DB file", ""};
      case sort::letter:
      case sort::first_end:
        return {length, "the first line has no end", ""};
      case sort::name:
        return {f.at, "the name is cut off by the end of the file", ""};
      case sort::nul:
        return {before(1).at, "the name is cut off by the end of the file", ""};
      default:
        return {f.at,
                "expected the " + std::to_string(f.size) + " bytes of " + label(f) + ", found " +
                    std::to_string(length - f.at) + " and the end of the file",
                f.path};
    }
  }

 private:
  /// Shows where the name is first asked for. A root may be nameless.
  void plant_address(const field& f) {
    const field* use = nullptr;
    for (const field& each : file().fields) {
      if (use == nullptr && each.kind == sort::reference && each.value == f.value) use = &each;
    }
    for (const std::uint64_t address : {name_fields::unknown, std::uint64_t{0}, unused_}) {
      const std::string changed = file().with(f, reference(address));
      if (use == nullptr) {
        fine(f, changed);
      } else {
        fault(f, changed, {use->at, "is not in the name table", use->path});
      }
    }
  }

  void plant_child_count_off(const field& f) {
    const std::size_t record = record_++;
    ASSERT_EQ(file().records[record].path, f.path);
    if (f.value + 1 < one_too_many(file(), f.end(), f.least)) {
      fault(f, file().with(f, number(f.value + 1)), missing_child(file(), record, missing_record_));
    }
    if (f.value > 0) fault(f, file().with(f, number(f.value - 1)), extra_child(file(), record));
  }

  static std::string label(const field& f) {
    switch (f.kind) {
      case sort::name_count:
        return "the name count";
      case sort::address:
        return "a name's address";
      case sort::reference:
      case sort::root_reference:
        return "a name reference";
      default:
        return f.what;
    }
  }

  std::uint64_t unused_;
  std::string missing_record_;
  std::size_t record_ = 0;
};

}  // namespace test
