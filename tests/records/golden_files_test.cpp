// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Files of each form that stand in tests/golden, as the builds for each system once wrote them. Every later build reads
// them and writes the same bytes. A form that changes gets a new letter and new files; these stay.
//
// To make files of a further form: QELMODB_NEW_GOLDEN=FOLDER records_tests --gtest_filter=GoldenFiles.AreWritten
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "../database/exposed.h"
#include "np_device.h"
#include "qelmocompress.h"
#include "record_bytes.h"

namespace {

using qelmodb::content;
using qelmodb::form;
using test::add;
using test::add_wire;

/// What every form but the compressed one can hold: extremes, odd names, repetition, depth.
void fill_odd_tree(BX_DB& db) {
  add_wire(db, "CLK", 0, 0);
  BX_INSTANCE* logic = add(db, "LOGIC 1", INT32_MIN, 0, 9, INT32_MAX);
  add_wire(*logic, "IN$a$b", -3, INT32_MAX);
  add_wire(*logic, "IN$a$b", 4, INT32_MIN);
  add_wire(*logic, "OUT[7:0]/\t\\", 5, 6);
  add_wire(*logic, "\xc3\x84\xe2\x86\x92\xf0\x9f\x94\x8c", 7, 8);
  BX_INSTANCE* matrix = add(*logic, "BASIC_ASS", 0, 2, 3, 4);
  add_wire(*matrix, "CLK", 0, 3);
  add(db, "", 0, 20, 9, 29);
  add(db, "", 0, 20, 9, 29);
  // Its column has the longest name that files take.
  add_wire(*add(db, std::string(94, 'n').c_str(), 10, 0, 19, 29), "", -1, -1);
  BX_INSTANCE* nested = add(db, "NEST", 30, 30, 39, 39);
  for (bx_long level = 1; level < 12; ++level) nested = add(*nested, "NEST", 30 + level, 30, 39, 39);
}

/// What compressing has a use for: tiles that look alike, and switch matrices whose wires run along rows, along columns
/// and nowhere, from end to end of the device or with gaps.
void fill_device(BX_DB& db) {
  add_wire(db, "GLOBAL", 3, 4);
  for (const bx_long x : {-20, 0, 20, 40}) {
    for (const bx_long y : {-300, 0, 300}) {
      BX_INSTANCE* tile = add(db, x == 40 ? "IO" : "LOGIC", x, y, x + 19, y + 299);
      add_wire(*tile, "IN", x + 1, y + 1);
      if (x != 40) add_wire(*tile, "OUT", x + 2, y - 100000);
      BX_INSTANCE* matrix = add(*tile, "BASIC_ASS", x, y, x + 4, y + 7);
      add_wire(*matrix, "EAST", x < 0 ? 0 : x, y + 2);
      add_wire(*matrix, "LOCAL", x + 3, y + 3);
      add_wire(*matrix, "LONG", x + 2, 150);
      if (x != 40) add_wire(*matrix, "NORTH", x + 1, y == -300 ? 300 : y);
      if (y == 0 && x != 40) add_wire(*matrix, "SPINE", 7, 0);
    }
  }
  add(db, "CORNER", 60, -300, 79, -1);
}

struct golden_file {
  const char* name;
  form as;
  content what;
  void (*fill)(BX_DB& db);

  bool has_references() const { return as != form::text && what == content::database; }
};

void PrintTo(const golden_file& file, std::ostream* out) { *out << file.name; }

const golden_file golden_files[] = {{"odd_text.bxd", form::text, content::database, fill_odd_tree},
                                    {"odd_binary.bxd", form::binary, content::database, fill_odd_tree},
                                    {"odd_text.bxg", form::text, content::grid, fill_odd_tree},
                                    {"odd_binary.bxg", form::binary, content::grid, fill_odd_tree},
                                    {"device_text.bxd", form::text, content::database, fill_device},
                                    {"device_binary.bxd", form::binary, content::database, fill_device},
                                    {"device_compressed.bxd", form::compressed, content::database, fill_device}};

/// The systems that files were written on; each build reads the files of both.
const char* const systems[] = {"linux", "windows"};

std::string golden(const std::string& name) { return std::string(QELMODB_GOLDEN_FILES) + "/" + name; }

/// Writes what the file should hold through ut_file, as clients do.
void write(const golden_file& file, const std::string& path) {
  BX_DB db("TOP", -50, -400, 100, 700);
  file.fill(db);
  const bool text = file.as == form::text;
  if (file.as == form::compressed) {
    qelmodb::intern_root_name(db);
    ASSERT_TRUE(qelmodb::compression_objections(db).empty());
    db.compress();
    ASSERT_EQ(qelmodb::find_compression_losses(db).total(), 0);
    ASSERT_EQ(db.dumpcompress(path.c_str(), false), 1);
  } else if (file.what == content::grid) {
    ASSERT_EQ(db.dumpgrid(path.c_str(), text), 1);
  } else {
    ASSERT_EQ(db.dump(path.c_str(), text), 1);
  }
}

class GoldenFiles : public testing::TestWithParam<golden_file> {
 protected:
  // Names come back with their "$".
  test::separator whole_names_{'$'};
};

TEST_P(GoldenFiles, AreWritten) {
  const golden_file& file = GetParam();
  test::temporary_folder folder;
  const char* const keep = std::getenv("QELMODB_NEW_GOLDEN");
  const std::string path = keep != nullptr ? std::string(keep) + "/" + file.name : folder.file(file.name);
  ASSERT_NO_FATAL_FAILURE(write(file, path));
  const std::string written = test::read_file(path);
  for (const char* system : systems) {
    const std::string bytes = test::read_file(golden(std::string(system) + "/" + file.name));
    ASSERT_NE(bytes, "") << system;
    if (file.has_references()) {
      EXPECT_EQ(test::with_numbered_names(written), test::with_numbered_names(bytes)) << system;
    } else {
      EXPECT_EQ(written, bytes) << system;
    }
  }
}

TEST_P(GoldenFiles, AreLoadableAndGiveTheTree) {
  const golden_file& file = GetParam();
  BX_DB expected("TOP", -50, -400, 100, 700);
  file.fill(expected);
  for (const char* system : systems) {
    const std::string path = golden(std::string(system) + "/" + file.name);
    const qelmodb::check_report report = qelmodb::check_file(path.c_str(), file.what);
    EXPECT_TRUE(report.loadable()) << path << ": " << (report.faults.empty() ? "" : report.faults.front().text());
    EXPECT_EQ(report.file_form, file.as);
    BX_DB db;
    const bool loaded = (file.what == content::grid ? db.loadgrid(path.c_str()) : db.load(path.c_str())) == 1;
    EXPECT_TRUE(loaded) << path;
    EXPECT_TRUE(qelmodb::same_tree(db, expected, file.what)) << path;
  }
}

INSTANTIATE_TEST_SUITE_P(OfEachForm, GoldenFiles, testing::ValuesIn(golden_files), [](const auto& tested) {
  std::string name = tested.param.name;
  for (char& c : name) {
    if (c == '.') c = '_';
  }
  return name;
});

/// A text file with the line ends that editors on Windows give it.
std::string with_carriage_returns(const std::string& text) {
  std::string lines;
  for (const char c : text) {
    if (c == '\n') lines += '\r';
    lines += c;
  }
  return lines;
}

TEST(GoldenTextFiles, GiveTheSameTreeWithCarriageReturns) {
  const test::separator whole_names('$');
  test::temporary_folder folder;
  for (const golden_file& file : golden_files) {
    if (file.as != form::text) continue;
    const std::string path = folder.file(file.name);
    test::write_file(path, with_carriage_returns(test::read_file(golden(std::string("linux/") + file.name))));
    EXPECT_TRUE(qelmodb::check_file(path.c_str(), file.what).loadable()) << path;
    BX_DB expected("TOP", -50, -400, 100, 700);
    file.fill(expected);
    BX_DB db;
    EXPECT_EQ(file.what == content::grid ? db.loadgrid(path.c_str()) : db.load(path.c_str()), 1) << path;
    EXPECT_TRUE(qelmodb::same_tree(db, expected, file.what)) << path;
  }
}

TEST(GoldenDescription, GivesTheDeviceAndIsWritten) {
  test::temporary_folder folder;
  const std::string text = test::read_file(golden("device.npd"));
  const std::string copy = folder.file("copy.npd");
  test::write_file(copy, with_carriage_returns(text));
  for (const std::string& path : {copy, golden("device.npd")}) {
    std::string error;
    const std::unique_ptr<NP_TABLEDEVICE> device = NP_TABLEDEVICE::read(path.c_str(), error);
    ASSERT_NE(device, nullptr) << error;
    EXPECT_EQ(device->maxrow(), 2);
    EXPECT_EQ(device->maxcol(), 4);
    EXPECT_EQ(device->rowof({0, -1}), 0);
    EXPECT_EQ(device->rowof({0, 300}), 2);
    EXPECT_EQ(device->colof({-20, 0}), 0);
    EXPECT_EQ(device->colof({60, 0}), 4);
    EXPECT_TRUE(device->write(copy.c_str(), error)) << error;
    EXPECT_EQ(test::read_file(copy), text);
  }
}

}  // namespace
