// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A fault planted in every field of text files, one after the other: each is told at its place, with its line and the
// path to it.
#include "text_fields.h"

namespace {

using test::fault_planter;
using test::field;
using test::sort;
using test::text_fields;
using test::told;

constexpr std::size_t longest_key = 99;

/// Plants all faults of all fields of one file.
class text_planter : public fault_planter {
 public:
  using fault_planter::fault_planter;

 private:
  bool is_last(std::size_t fields) const { return at() + fields >= file().fields.size(); }

  void fault_here(const std::string& instead, std::size_t place, const std::string& words) {
    fault(here(), file().with(here(), instead), place, words);
  }
  /// The fault shows only in the next field.
  void fault_behind(const std::string& instead, std::size_t place, const std::string& words) {
    fault(here(), file().with(here(), instead), {place, words, behind(1).path});
  }
  void fine_here(const std::string& instead) { fine(here(), file().with(here(), instead)); }

  void plant(const field& f) override {
    switch (f.kind) {
      case sort::magic:
        return plant_magic(f);
      case sort::letter:
        // Read as binary: the first four characters of the label are a number of names, or the file is one long name.
        for (const char* letter : {"B", "C", "a", "?"}) {
          fault_here(letter, 8, file().what == test::content::grid ? "the name is longer" : "the name count is ");
        }
        return;
      case sort::first_end:
        // All of the root's line belongs to the first one, and a count stands in its place.
        fault_here("x", behind(21).at, "expected BX_INSTANCE: \"name\", found ");
        fine_here("\r\n");
        return fine_here(" of 1999\n");
      case sort::label:
        return plant_label(f);
      case sort::label_gap:
        fault_here("x", f.at, "found \"x");
        fine_here("");
        return fine_here("\t  ");
      case sort::open_quote:
        fault_here("'", f.at, "\"name\", found \"'");
        return fault_here("x", f.at, "\"name\", found \"x");
      case sort::name:
        return plant_name(f);
      case sort::close_quote:
        return plant_close_quote();
      case sort::point_gap:
        fault_here("", f.at, "expected ' ' before a point, found \"(");
        return fault_here("\t", f.at, "expected ' ' before a point, found \"\\x09");
      case sort::open_point:
        fault_here("", f.at, "expected '(' of a point, found ");
        return fault_here("[", f.at, "expected '(' of a point, found \"[");
      case sort::number:
        return plant_number(f);
      case sort::comma:
      case sort::close_point:
        fault_here("", before(1).at, expected_number(before(1), f));
        return fault_here(";", before(1).at, expected_number(before(1), f));
      case sort::number_gap:
        fault_here("x", f.at, expected_number(behind(1), behind(2)) + ", found \"x");
        fault_here("\t", f.at, expected_number(behind(1), behind(2)) + ", found \"\\x09");
        // The reader has room for 99 characters.
        fault_here(std::string(longest_key, ' '), f.at + longest_key, expected_number(behind(1), behind(2)));
        fine_here("");
        return fine_here(std::string(longest_key - behind(1).size, ' '));
      case sort::record_end:
        return plant_record_end(f);
      case sort::wire_count:
      case sort::child_count:
        return plant_count(f);
      case sort::count_end:
        return plant_count_end(f);
      default:
        FAIL() << f.what;
    }
  }

  void plant_label(const field& f) {
    const std::string expected = "expected " + f.what + " \"name\", found ";
    const std::string other = f.what == "BX_WIRE:" ? "BX_INSTANCE:" : "BX_WIRE:";
    for (std::size_t i = 0; i < f.size; ++i) {
      std::string label = f.what;
      label[i] = '?';
      fault_here(label, f.at, expected + "\"" + label.substr(0, 24));
    }
    fault_here(other, f.at, expected + "\"" + other);
    // Blanks are passed over.
    fault_here("", f.at + behind(1).size, expected + "\"\"");
  }

  void plant_name(const field& f) {
    const std::string rest = file().bytes.substr(f.at, f.size / 2);
    fault_here(std::string(longest_key + 1, 'n'), f.at, "the name is longer than 99 characters");
    fault_here('\0' + rest, f.at, "the name holds a NUL byte");
    fault_here(rest + '\0', f.at, "the name holds a NUL byte");
    fault_here(rest + "\"more", f.at + rest.size() + 1, "expected ' ' before a point, found \"more");
    fine_here(std::string(longest_key, 'n'));
    fine_here("");
    fine_here("line\nend");
  }

  void plant_close_quote() {
    // Nothing shows that the longest name is not longer.
    const bool is_longest = before(1).size == longest_key;
    const std::string words = is_longest ? "longer than 99 characters" : "the name has no closing quote";
    for (const char* instead : {"", "'", " "}) fault_here(instead, before(1).at, words);
  }

  static std::string expected_number(const field& number, const field& end) {
    return "expected the number " + number.what + " and '" + (end.kind == sort::comma ? "," : ")") + "'";
  }

  void plant_number(const field& f) {
    for (const std::string instead :
         {"", "x", "1x", "x1", "-", "+", "--1", "+-1", "++1", "- 1", "1 2", "1.5", "0x10", "(1"}) {
      fault_here(instead, f.at, expected_number(f, behind(1)) + ", found ");
    }
    fault_here(std::string(longest_key + 1, '0'), f.at, expected_number(f, behind(1)) + ", found ");
    for (const char* instead : {"2147483648", "-2147483649", "99999999999999999999"}) {
      fault_here(instead, f.at, f.what + " does not fit into 32 bits");
    }
    for (const char* instead : {"2147483647", "-2147483648", "+5", "007", "-0"}) fine_here(instead);
  }

  void plant_record_end(const field& f) {
    for (const char* instead : {"", "x", " ", "\r", " more\n", " 1\n"}) {
      const std::size_t place = f.at;
      fault_here(instead, place, "expected the end of the line, found ");
    }
    fine_here("\r\n");
    fine_here(" \t\n");
    if (behind(1).kind == sort::label) {
      fault_behind("\n\n", f.at + 1, "\"name\", found the end of the line");
    } else {
      fault_behind("\n\n", f.at + 1, "expected a line with the " + behind(1).what + ", found the end of the line");
    }
  }

  void plant_count(const field& f) {
    const std::string expected = "expected a line with the " + f.what + ", found ";
    for (const char* instead : {"", "x", "2 x", "x2", "-", "+-1", "1.5", "2,"}) fault_here(instead, f.at, expected);
    fault_here(std::string(longest_key + 1, '0'), f.at, expected);
    fault_here("-1", f.at, "the " + f.what + " is -1");
    fault_here("-2147483648", f.at, "the " + f.what + " is -2147483648");
    fault_here("2147483648", f.at, "the " + f.what + " does not fit into 32 bits");
    const bx_long unjustified = one_too_many(file(), behind(1).end(), f.least);
    for (const bx_long count : {unjustified, 2147483647}) {
      fault_here(std::to_string(count), f.at, "the " + f.what + " is " + std::to_string(count) + ", but the ");
    }
    const std::string same = std::to_string(f.value);
    for (const char* start : {"+", "0", " ", "\t"}) fine_here(start + same);
    fine_here(same + " ");
    f.kind == sort::wire_count ? plant_wire_count_off(f) : plant_child_count_off(f);
  }

  /// The record that is missing, or too much, stands where the child count does or right before it.
  void plant_wire_count_off(const field& f) {
    std::size_t behind_wires = at() + 2;
    std::size_t last_wire = 0;
    while (file().fields[behind_wires].kind != sort::child_count) {
      if (file().fields[behind_wires].kind == sort::label) last_wire = file().fields[behind_wires].at;
      ++behind_wires;
    }
    if (f.value + 1 < one_too_many(file(), behind(1).end(), f.least)) {
      fault(f, file().with(f, std::to_string(f.value + 1)), file().fields[behind_wires].at, "expected BX_WIRE: ");
    }
    if (f.value > 0) {
      fault(f, file().with(f, std::to_string(f.value - 1)), last_wire, "expected a line with the child count, found ");
    }
  }

  void plant_child_count_off(const field& f) {
    const std::size_t record = record_++;
    ASSERT_EQ(file().records[record].path, f.path);
    if (f.value + 1 < one_too_many(file(), behind(1).end(), f.least)) {
      fault(f, file().with(f, std::to_string(f.value + 1)), missing_child(file(), record, "expected BX_INSTANCE: "));
    }
    if (f.value > 0) fault(f, file().with(f, std::to_string(f.value - 1)), extra_child(file(), record));
  }

  void plant_count_end(const field& f) {
    const field& count = before(1);
    const std::string expected = "expected a line with the " + count.what + ", found ";
    fine_here("\r\n");
    fine_here(" \n");
    if (is_last(1)) {
      fault_here("x", f.end(), "the line with the child count has no end");
      fine_here("");
      return fine_here("\n\n");
    }
    fault_here("x", count.at, expected);
    const field& next = behind(1);
    fault_behind("\n\n", f.at + 1,
                 next.kind == sort::label ? next.what : "expected a line with the child count, found ");
    if (next.kind == sort::label) return fault_here("", count.at, expected);
    // No wires: the digits of both counts make one, and what stands behind them is taken for a wire or a count.
    const std::size_t place = behind(2).end() - 1;
    fault_here("", place, next.value > 0 ? "expected BX_WIRE: " : "the child count");
  }

  /// The last count needs no line end.
  bool is_whole(std::size_t length) const override { return length + 1 == file().bytes.size(); }

  told lacking(const field& f, std::size_t length) const override {
    // What comes after a count of 0 is missed, not its line end.
    const bool is_none = f.kind == sort::count_end && before(1).value == 0;
    if (is_none && before(1).kind == sort::wire_count) return {length, "expected a line with the child count", f.path};
    if (is_none) return {length, "expected BX_INSTANCE", behind(1).path};
    switch (f.kind) {
      case sort::magic:
        return {0, "not a BX_DB file", ""};
      case sort::letter:
      case sort::first_end:
        return {length, "the first line has no end", ""};
      case sort::label:
        return {f.at, "expected " + f.what, f.path};
      case sort::name:
        return {f.at, "the name has no closing quote", f.path};
      case sort::close_quote:
        return {before(1).at, "the name has no closing quote", f.path};
      case sort::number:
        return {f.at, expected_number(f, behind(1)), f.path};
      case sort::comma:
      case sort::close_point:
        return {before(1).at, expected_number(before(1), f), f.path};
      case sort::wire_count:
      case sort::child_count:
        if (length == f.at) return {length, "expected a line with the " + f.what, f.path};
        [[fallthrough]];
      default:
        return {length, is_line_end(f) ? "has no end" : "found the end of the file", f.path};
    }
  }

  static bool is_line_end(const field& f) {
    return f.kind == sort::record_end || f.kind == sort::count_end || f.least != 0;
  }

  std::size_t record_ = 0;
};

void expect_every_field_told(const text_fields& text, int exact, int cuts, int accepted) {
  text_planter planter(text.file);
  planter.plant_all();
  EXPECT_EQ(planter.harmless(), std::set<std::string>{});
  EXPECT_EQ(planter.exact(), exact);
  EXPECT_EQ(planter.vague(), 0);
  EXPECT_EQ(planter.cuts(), cuts);
  EXPECT_EQ(planter.accepted(), accepted);
}

TEST(CheckerTextFields, AreThoseOfASoundFileThatTheLibraryWritesToo) {
  const test::separator keep('$');
  for (const test::content what : {test::content::database, test::content::grid}) {
    const text_fields text(test::rich_tree(), what);
    EXPECT_TRUE(qelmodb::check_bytes(text.file.bytes, what).faults.empty());
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, text.file.bytes, what));
    EXPECT_EQ(test::dumped(db, test::form::text, what), text.file.bytes);
    EXPECT_EQ(text.file.fields.back().end(), text.file.bytes.size());
    for (std::size_t i = 1; i < text.file.fields.size(); ++i) {
      ASSERT_EQ(text.file.fields[i].at, text.file.fields[i - 1].end());
    }
  }
}

TEST(CheckerTextFields, OfADatabaseTellEveryPlantedFaultAtItsPlace) {
  expect_every_field_told(text_fields(test::rich_tree(), test::content::database), 2356, 764, 638);
}

TEST(CheckerTextFields, OfAGridTellEveryPlantedFaultAtItsPlace) {
  expect_every_field_told(text_fields(test::rich_tree(), test::content::grid), 1299, 446, 347);
}

}  // namespace
