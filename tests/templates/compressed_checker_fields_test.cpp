// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A fault planted in every field of a compressed file, one after the other: each is told at its place, with the path to
// it. Where two fields contradict each other, a map or an instance is at fault, not the grid of columns and rows.
#include "compressed_fields.h"

namespace {

using test::compressed_fields;
using test::field;
using test::number;
using test::sort;
using test::told;

std::string word_of(std::size_t value) { return test::little_endian(value, 2); }

/// Plants all faults of all fields of the file.
class compressed_planter : public test::binary_fault_planter {
 public:
  using test::binary_fault_planter::binary_fault_planter;

 private:
  /// The next field of a kind behind that in hand, or before it.
  const field& next(sort kind) const {
    std::size_t i = at() + 1;
    while (file().fields.at(i).kind != kind) ++i;
    return file().fields[i];
  }
  const field& last(sort kind) const {
    std::size_t i = at() - 1;
    while (file().fields.at(i).kind != kind) --i;
    return file().fields[i];
  }
  bool has_next(sort kind, sort until) const {
    std::size_t i = at() + 1;
    while (file().fields.at(i).kind != kind && file().fields[i].kind != until) ++i;
    return file().fields[i].kind == kind;
  }

  std::size_t own_value(const field& f) const { return test::number_at(file().bytes, f.at, static_cast<int>(f.size)); }

  void fault_word(std::size_t value, const field& place, const std::string& words) {
    const field& f = here();
    fault(f, file().with(f, word_of(value)), {place.at, words, place.path});
  }
  void fault_word(std::size_t value, const std::string& words) { fault_word(value, here(), words); }
  void fine_word(std::size_t value) {
    const field& f = here();
    fine(f, file().with(f, word_of(value)));
  }
  void misleading_word(std::size_t value, const field& start) {
    const field& f = here();
    misleading(f, file().with(f, word_of(value)), start.at);
  }

  void plant(const field& f) override {
    switch (f.kind) {
      case sort::letter:
        return plant_letter(f);
      case sort::list_count:
        plant_word_count(f);
        misleading_word(own_value(f) + 1, behind(1));
        return misleading_word(own_value(f) - 1, behind(1));
      case sort::list_size:
        return plant_list_size(f);
      case sort::list_entry:
        for (const std::size_t value : {std::size_t{compressed_fields::wire_templates}, std::size_t{65535}}) {
          fault_word(value, "a wire list has the wire template " + std::to_string(value) + ", but there are 3");
        }
        return fine_word(own_value(f) == 1 ? 0 : 1);
      case sort::wire_template_count:
        return plant_wire_template_count(f);
      case sort::flag:
        for (const std::size_t value : {0U, 1U, 2U, 65535U}) fine_word(value);
        return;
      case sort::direction:
        return plant_direction(f);
      case sort::map_size:
        for (const std::size_t value : {std::size_t{0}, own_value(f) - 1, own_value(f) + 1, std::size_t{65535}}) {
          fault_word(value, "has a size of " + std::to_string(value) + ", but there are ");
        }
        return;
      case sort::run_count:
        return plant_run_count(f);
      case sort::first_start:
        for (const std::size_t value : {1U, 2U, 65535U}) {
          fault_word(value, " has no run for 0; the first starts at " + std::to_string(value));
        }
        return;
      case sort::next_start:
        fault_word(0, "the run that starts at 0 stands behind one that starts at 0");
        // Beyond the map nothing asks for it.
        return fine_word(65535);
      case sort::map_number:
        return plant_map_number();
      case sort::offset:
        for (const bx_long value : {-2147483647 - 1, -1, 0, 2147483647}) {
          fine(f, file().with(f, number(value) + number(value)));
        }
        return;
      case sort::offset_map_count:
        return plant_offset_map_count(f);
      case sort::line_count:
        plant_word_count(f);
        misleading_word(own_value(f) + 1, first(sort::map_size));
        return misleading_word(own_value(f) - 1, first(sort::map_size));
      case sort::line_place:
        return plant_line_place(f);
      case sort::line_number:
        for (const std::size_t value : {own_value(f) + 1, own_value(f) + 65535, std::size_t{65535}}) {
          fault_word(value & 65535, " has the number " + std::to_string(value & 65535) + " instead of ");
        }
        return;
      case sort::template_count:
        plant_count(f);
        fault(f, file().with(f, number(f.value + 1)), {file().records[0].at, "is not in the name table", ""});
        return misleading(f, file().with(f, number(f.value - 1)), f.end());
      case sort::layout_wire_count:
        plant_word_count(f);
        misleading_word(own_value(f) + 1, behind(1));
        if (own_value(f) > 0) misleading_word(own_value(f) - 1, behind(1));
        return;
      case sort::codes:
        return plant_codes(f);
      case sort::step:
        for (const char byte : {'\0', '\x7f', '\x80', '\xff'}) fine(f, file().with(f, std::string(f.size, byte)));
        return;
      case sort::matrix_x:
      case sort::matrix_y:
        return plant_matrix_place(f);
      case sort::template_reference:
        return plant_template_reference(f);
      default:
        EXPECT_TRUE(plant_common(f)) << f.what;
    }
  }

  const field& first(sort kind) const {
    return *std::find_if(file().fields.begin(), file().fields.end(), [&](const field& f) { return f.kind == kind; });
  }

  void plant_letter(const field& f) {
    fault(f, file().with(f, "A"), {8, "expected BX_INSTANCE: \"name\", found ", ""});
    for (const char* letter : {"B", "?", ""}) misleading(f, file().with(f, letter), 7);
    fine(f, file().with(f, "C of 1999"));
  }

  /// A count of 2 bytes.
  void plant_word_count(const field& f) {
    for (const auto value : {one_too_many(file(), f.end(), f.least), 65535}) {
      fault_word(static_cast<std::size_t>(value), "the " + f.what + " is " + std::to_string(value) + ", but the ");
    }
  }

  void plant_list_size(const field& f) {
    const auto before = static_cast<std::size_t>(f.value) - own_value(f);
    const auto most = static_cast<std::size_t>(one_too_many(file(), f.end(), f.least));
    for (const std::size_t total : {most, before + 65535}) {
      fault_word(total - before, "the wire lists up to here have " + std::to_string(total) + " wires, but the ");
    }
    // The number of wire templates is taken for an entry of a list, and part of a name for their number.
    const field& count = next(sort::wire_template_count);
    fault_word(own_value(f) + 1, next(sort::reference), "the wire template count is ");
    if (own_value(f) > 0) fault_word(own_value(f) - 1, count, "is not in the name table");
  }

  void plant_wire_template_count(const field& f) {
    plant_word_count(f);
    fault_word(own_value(f) + 1, next(sort::line_count), "is not in the name table");
    // The last one is taken for the columns.
    const field& columns = next(sort::line_count);
    const field* last_reference = nullptr;
    for (const field& each : file().fields) {
      if (each.kind == sort::reference && each.at < columns.at) last_reference = &each;
    }
    fault_word(own_value(f) - 1, *last_reference, "the column count is ");
  }

  /// The maps are as large as the other directions want them.
  void plant_direction(const field& f) {
    const bool by_column = own_value(f) == 1;
    const std::string size = std::to_string(own_value(behind(1)));
    for (const std::size_t value : {0U, 1U, 2U, 3U, 65535U}) {
      if ((value == 1) == by_column) {
        fine_word(value);
      } else {
        fault_word(value, behind(1), "a range map has a size of " + size + ", but there are ");
      }
    }
  }

  void plant_run_count(const field& f) {
    plant_word_count(f);
    // Runs are taken for what follows them, or the other way round. A map without runs is at fault itself.
    misleading_word(own_value(f) + 1, before(1));
    misleading_word(own_value(f) - 1, before(1));
    const std::size_t run = static_cast<std::size_t>(f.least) * own_value(f);
    const std::string without = file().bytes.substr(0, f.at) + word_of(0) + file().bytes.substr(f.end() + run);
    fault(f, without, before(1).at, " has a size of " + std::to_string(own_value(before(1))) + ", but no runs");
  }

  void plant_map_number() {
    const std::size_t maps = own_value(next(sort::offset_map_count));
    for (const std::size_t value : {maps, std::size_t{65535}}) {
      fault_word(value, "the index map leads to offset map " + std::to_string(value) + ", but there are ");
    }
    fine_word(maps - 1);
  }

  void plant_offset_map_count(const field& f) {
    plant_word_count(f);
    // The index map leads to the last one, which is not read.
    fault_word(own_value(f) - 1, last(sort::map_number), "the index map leads to offset map ");
    if (has_next(sort::reference, sort::line_count)) {
      // Part of the next wire template's name is taken for a map.
      const field& name = next(sort::reference);
      fault(f, file().with(f, word_of(own_value(f) + 1)), name.at + 2, "the run count is ");
    } else {
      misleading_word(own_value(f) + 1, behind(1));
    }
  }

  void plant_line_place(const field& f) {
    const std::string number_label = behind(1).what;
    const bool is_first = own_value(behind(1)) == 0;
    if (is_first) {
      fault(f, file().with(f, number(2147483647)), behind(2).at, "stands behind that at 2147483647");
    } else {
      for (const bx_long value : {before(2).value, before(2).value - 1, -2147483647 - 1}) {
        fault(f, file().with(f, number(value)), f.at, "stands behind that at " + std::to_string(before(2).value));
      }
    }
    // No longer where a switch matrix looks for it.
    const bool is_column = number_label == "column";
    const sort asked = is_column ? sort::matrix_x : sort::matrix_y;
    for (const field& place : file().fields) {
      if (place.kind != asked || test::number_at(file().bytes, place.at, 4) != static_cast<bx_ulong>(f.value)) continue;
      const std::string words = "no " + number_label + " of the switch matrices begins at " + (is_column ? "x" : "y");
      return fault(f, file().with(f, number(f.value + 1)), {place.at, words, place.path + "/BASIC_ASS"});
    }
    ADD_FAILURE() << "no switch matrix stands there";
  }

  void plant_codes(const field& f) {
    const auto size = [](std::size_t codes) {
      constexpr int sizes[] = {0, 1, 2, 4};
      return sizes[codes >> 2 & 3] + sizes[codes & 3];
    };
    const std::size_t own = own_value(f);
    for (std::size_t codes = 0; codes < 16; ++codes) {
      const std::string changed = file().with(f, std::string(1, static_cast<char>(codes)));
      if (size(codes) == size(own)) {
        fine(f, changed);
      } else {
        misleading(f, changed, f.at);
      }
    }
    fine(f, file().with(f, std::string(1, static_cast<char>(own | 0xf0))));
  }

  void plant_matrix_place(const field& f) {
    const bool is_column = f.kind == sort::matrix_x;
    for (const bx_long value : {-2147483647 - 1, 2, 2147483647}) {
      const std::string words = std::string("no ") + (is_column ? "column" : "row") +
                                " of the switch matrices begins at " + (is_column ? "x" : "y") + " = " +
                                std::to_string(value);
      fault(f, file().with(f, number(value)), {f.at, words, f.path + "/BASIC_ASS"});
    }
    // That of another one.
    const field& other = first(is_column ? sort::line_place : sort::matrix_y);
    fine(f, file().with(f, file().bytes.substr(other.at, 4)));
  }

  void plant_template_reference(const field& f) {
    const std::string start = f.path.empty() ? "" : f.path + "/";
    for (const std::size_t value : {std::size_t{compressed_fields::layouts}, std::size_t{0x7fff}}) {
      const std::string words = "the instance refers to template " + std::to_string(value) + ", but there are 3";
      fault(f, file().with(f, word_of(value)), {f.at, words, start});
    }
    for (const std::size_t value : {std::size_t{compressed_fields::lists}, std::size_t{0x7fff}}) {
      const std::string words = "the switch matrix refers to wire list " + std::to_string(value) + ", but there are 3";
      fault(f, file().with(f, word_of(0x8000 + value)), {f.at, words, start + "BASIC_ASS"});
    }
    for (const std::size_t value : {0U, 1U, 2U, 0x8002U}) fine_word(value);
  }
};

TEST(CompressedCheckerFields, AreThoseOfASoundFileThatHoldsTheTree) {
  const compressed_fields compressed;
  const qelmodb::check_report report = qelmodb::check_bytes(compressed.file.bytes, test::content::database);
  EXPECT_TRUE(report.faults.empty());
  EXPECT_EQ(report.instances, 10);
  BX_DB db;
  ASSERT_TRUE(test::loaded(db, compressed.file.bytes));
  EXPECT_EQ(qelmodb::measure(db).instances, 10);
  EXPECT_EQ(qelmodb::measure(db).wires, report.wires);
  EXPECT_EQ(qelmodb::measure(db).depth, 3);
  EXPECT_EQ(compressed.file.bytes.find('\n'), compressed.file.bytes.rfind('\n'));
  EXPECT_EQ(compressed.file.fields.back().end(), compressed.file.bytes.size());
  for (std::size_t i = 1; i < compressed.file.fields.size(); ++i) {
    ASSERT_EQ(compressed.file.fields[i].at, compressed.file.fields[i - 1].end());
  }
}

TEST(CompressedCheckerFields, TellEveryPlantedFaultAtItsPlace) {
  const compressed_fields compressed;
  compressed_planter planter(compressed.file, compressed.names, "expected the 4 bytes of xmin, found 0");
  planter.plant_all();
  // Any number is a coordinate, an offset, a step or a flag.
  const std::set<std::string> harmless = {"absolute", "offset", "a wire's node", "xmin",
                                          "ymin",     "xmax",   "ymax",          "address of of nothing"};
  EXPECT_EQ(planter.harmless(), harmless);
  EXPECT_EQ(planter.exact(), 387);
  EXPECT_EQ(planter.vague(), 127);
  EXPECT_EQ(planter.cuts(), 697);
  EXPECT_EQ(planter.accepted(), 360);
}

}  // namespace
