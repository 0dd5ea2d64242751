// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A fault planted in every field of binary files, one after the other: each is told at its place, with the path to it.
#include "binary_tree_fields.h"

namespace {

using test::binary_fields;
using test::field;
using test::number;
using test::plain_instance;
using test::plain_wire;
using test::sort;
using test::told;

/// Plants all faults of all fields of one file.
class binary_planter : public test::binary_fault_planter {
 public:
  using test::binary_fault_planter::binary_fault_planter;

 private:
  void plant(const field& f) override {
    switch (f.kind) {
      case sort::letter:
        return plant_letter(f);
      case sort::stored_name:
        return plant_grid_name(f);
      case sort::wire_count:
        plant_count(f);
        return plant_wire_count_off(f);
      default:
        EXPECT_TRUE(plant_common(f)) << f.what;
    }
  }

  void plant_letter(const field& f) {
    fault(f, file().with(f, "A"), {8, "expected BX_INSTANCE: \"name\", found ", ""});
    // The tree has no templates; but a grid is never compressed.
    if (file().what == test::content::database) {
      misleading(f, file().with(f, "C"), 8);
    } else {
      fine(f, file().with(f, "C"));
    }
    fine(f, file().with(f, "b"));
    fine(f, file().with(f, "B more"));
    fine(f, file().with(f, ""));
  }

  void plant_grid_name(const field& f) {
    fault(f, file().with(f, std::string(255, 'n')), f.at, "the name is longer than 254 characters");
    fine(f, file().with(f, std::string(254, 'n')));
    fine(f, file().with(f, ""));
    fine(f, file().with(f, "\"\n"));
  }

  /// What stands behind the wires is not a wire, and a wire is no child count.
  void plant_wire_count_off(const field& f) {
    std::size_t behind_wires = at() + 1;
    std::size_t last_wire = 0;
    while (file().fields[behind_wires].kind != sort::child_count) {
      if (file().fields[behind_wires].kind == sort::reference) last_wire = file().fields[behind_wires].at;
      ++behind_wires;
    }
    if (f.value + 1 < one_too_many(file(), f.end(), f.least)) {
      fault(f, file().with(f, number(f.value + 1)), file().fields[behind_wires].at, "is not in the name table");
    }
    if (f.value > 0) fault(f, file().with(f, number(f.value - 1)), last_wire, "the child count is ");
  }

  told lacking(const field& f, std::size_t length) const override {
    const bool is_nul = f.kind == sort::nul;
    if (!is_nul && f.kind != sort::stored_name) return test::binary_fault_planter::lacking(f, length);
    return {is_nul ? before(1).at : f.at, "the name is cut off by the end of the file", f.path};
  }
};

/// The numbers of what is expected.
struct numbers {
  int exact, vague, cuts, accepted;
};

void expect_every_field_told(const binary_fields& binary, const char* missing_record, const numbers& expected,
                             const std::set<std::string>& harmless) {
  binary_planter planter(binary.file, binary.names, missing_record);
  planter.plant_all();
  EXPECT_EQ(planter.harmless(), harmless);
  EXPECT_EQ(planter.exact(), expected.exact);
  EXPECT_EQ(planter.vague(), expected.vague);
  EXPECT_EQ(planter.cuts(), expected.cuts);
  EXPECT_EQ(planter.accepted(), expected.accepted);
}

std::string text_of(const plain_instance& inst, test::content what) {
  std::string text = "BX_INSTANCE: \"" + inst.name + "\"";
  const auto add_point = [&text](bx_long x, bx_long y) {
    text += " (" + std::to_string(x) + ", " + std::to_string(y) + ")";
  };
  add_point(inst.edges.xmin, inst.edges.ymin);
  add_point(inst.edges.xmax, inst.edges.ymax);
  if (what == test::content::database) text += "\n" + std::to_string(inst.wires.size());
  for (const plain_wire& wire : inst.wires) {
    text += what == test::content::database ? "\nBX_WIRE:  \"" + wire.name + "\"" : "";
    if (what == test::content::database) add_point(wire.x, wire.y);
  }
  text += "\n" + std::to_string(inst.children.size()) + "\n";
  for (const plain_instance& child : inst.children) text += text_of(child, what);
  return text;
}

TEST(CheckerBinaryFields, AreThoseOfASoundFileThatHoldsTheTree) {
  const test::separator keep('$');
  for (const test::content what : {test::content::database, test::content::grid}) {
    const binary_fields binary(test::rich_tree(), what);
    EXPECT_TRUE(qelmodb::check_bytes(binary.file.bytes, what).faults.empty());
    BX_DB db;
    ASSERT_TRUE(test::loaded(db, binary.file.bytes, what));
    EXPECT_EQ(test::dumped(db, test::form::text, what), "BX_DB:A\n" + text_of(test::rich_tree(), what));
    EXPECT_EQ(binary.file.bytes.find('\n'), binary.file.bytes.rfind('\n'));
    EXPECT_EQ(binary.file.fields.back().end(), binary.file.bytes.size());
    for (std::size_t i = 1; i < binary.file.fields.size(); ++i) {
      ASSERT_EQ(binary.file.fields[i].at, binary.file.fields[i - 1].end());
    }
  }
}

TEST(CheckerBinaryFields, OfADatabaseTellEveryPlantedFaultAtItsPlace) {
  // Any number is a coordinate, and a root may be nameless.
  expect_every_field_told(
      binary_fields(test::rich_tree(), test::content::database), "expected the 8 bytes of a name reference, found 0",
      {196, 29, 760, 371},
      {"xmin", "ymin", "xmax", "ymax", "x", "y", "reference to TOP", "address of TOP", "address of of nothing"});
}

TEST(CheckerBinaryFields, OfAGridTellEveryPlantedFaultAtItsPlace) {
  expect_every_field_told(binary_fields(test::rich_tree(), test::content::grid),
                          "the name is cut off by the end of the file", {64, 18, 330, 212},
                          {"xmin", "ymin", "xmax", "ymax"});
}

TEST(CheckerBinaryFields, AreFollowedByNothing) {
  for (const test::content what : {test::content::database, test::content::grid}) {
    const std::string whole = binary_fields(test::rich_tree(), what).file.bytes;
    for (const std::string& more : {std::string(1, '\0'), std::string("\n"), whole}) {
      const qelmodb::check_report report = qelmodb::check_bytes(whole + more, what);
      ASSERT_EQ(report.faults.size(), 1U);
      EXPECT_EQ(report.errors, 1);
      EXPECT_EQ(report.faults[0].offset, static_cast<std::int64_t>(whole.size()));
      EXPECT_EQ(report.faults[0].path, "");
    }
  }
}

}  // namespace
