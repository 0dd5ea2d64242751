// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Grids that cannot be built and cells that do not exist: what is reported, and that a manager that does not end
// the process finds everything in one piece.
#include <gtest/gtest.h>

#include "exposed.h"
#include "grid_tiles.h"
#include "test_host.h"

namespace {

using test::even_device;
using test::every_tile;
using test::put_tile;

constexpr const char* opaque_tag = "\xD1\xC5\xCC\xCD\xCF\xC4\xC2";

class GridFailure : public testing::Test {
 protected:
  GridFailure() { put_tile(db, "first", 0, 0, 10, 10); }

  void make_ragged() {
    put_tile(db, "second", 10, 0, 20, 10);
    put_tile(db, "third", 10, 10, 20, 20);
  }

  /// What the manager is told while the action runs.
  template <class Action>
  void expect_report(const std::string& detail, const std::string& tag, const std::string& code, Action action) {
    const test::environment shown(test::show_internal_error, "");
    test::recording_manager manager;
    {
      const test::substitute in_place(manager);
      action();
    }
    EXPECT_EQ(manager.lines,
              (std::vector<std::string>{"detail " + detail + " 0", std::string("fatal ") + test::fatal_text}));
    EXPECT_EQ(manager.tags, (std::vector<std::string>{tag}));
    EXPECT_EQ(manager.origins, (std::vector<std::string>{"qelmodb 1.0 " + code + " 0"}));
  }

  void expect_no_grid(const std::string& detail, const std::string& tag, const char* const* prefixes = every_tile) {
    expect_report(detail, tag, "20", [&] {
      const BX_GRID grid(&db, prefixes);
      EXPECT_EQ(grid.getnumrows(), 0);
      EXPECT_EQ(grid.getnumcols(), 0);
      EXPECT_EQ(grid.getnamewidth(), 0);
      EXPECT_EQ(grid.isvalid(0, 0), 0);
    });
  }

  BX_DB db{"D", 0, 0, 100, 100};
};

TEST_F(GridFailure, PrefixListOfTheTerminatingNullAloneAdmitsNothing) {
  const char* nothing[] = {nullptr};
  expect_no_grid("BX_GRID creation encountered a problem with the BX_INSTANCES.", "qelmodb", nothing);
}

TEST_F(GridFailure, RaggedSetNeedsADevice) {
  make_ragged();
  expect_no_grid("BX_GRID cannot get the device", "qelmodb");
}

TEST_F(GridFailure, TileOutsideOfTheDeviceIsNamedWithItsPlace) {
  make_ragged();
  even_device device(2, 1, 10);
  db.setdevice(&device);
  expect_no_grid("Device Error: third at (0,1) is out of graph paper (2,1)", "BXDB");
}

TEST_F(GridFailure, CellThatDoesNotExistIsReportedAndNull) {
  const BX_GRID grid(&db, every_tile);
  expect_report("Illegal BX_GRID row (1) or column (0)", opaque_tag, "1",
                [&] { EXPECT_EQ(grid.getinstance(1, 0), nullptr); });
  expect_report("Illegal BX_GRID row (-1) or column (0)", opaque_tag, "1",
                [&] { EXPECT_EQ(grid.getinstances(-1, 0), nullptr); });
  expect_report("Illegal BX_GRID row (0) or column (1)", opaque_tag, "1",
                [&] { EXPECT_EQ(grid.getinstances(0, 1), nullptr); });
  expect_report("Illegal BX_GRID row (0) or column (-1)", opaque_tag, "1",
                [&] { EXPECT_EQ(grid.getinstance(0, -1), nullptr); });
}

TEST_F(GridFailure, ManagerThatThrowsLeavesTheDatabaseWithoutAGrid) {
  make_ragged();
  test::throwing_manager manager;
  const test::substitute in_place(manager);
  EXPECT_THROW(db.getgrid(const_cast<const char**>(every_tile)), test::fatal_report);
  EXPECT_EQ(db.grid, nullptr);
}

using GridFailureDeathTest = GridFailure;

TEST_F(GridFailureDeathTest, EndsTheProcessThroughTheDatabase) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  make_ragged();
  const test::environment shown(test::show_internal_error, "1");
  EXPECT_EXIT(db.getgrid(const_cast<const char**>(every_tile)), testing::ExitedWithCode(EXIT_FAILURE),
              "^BX_GRID cannot get the device\n"
              "A fatal error occurred\\. The process will now exit\\. \\[qelmodb\\] qelmodb:" +
                  test::digits +
                  " version 1\\.0 code "
                  "20\n$");
}

TEST_F(GridFailureDeathTest, AfterLoadgridEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  test::temporary_folder folder;
  const std::string name = folder.file("d.bxg");
  ASSERT_EQ(db.dumpgrid(name.c_str(), false), 1);
  const test::environment shown(test::show_internal_error, "1");
  BX_DB loaded;
  ASSERT_EQ(loaded.loadgrid(name.c_str()), 1);
  EXPECT_EXIT(loaded.getgrid(const_cast<const char**>(every_tile)), testing::ExitedWithCode(EXIT_FAILURE),
              "^BX_GRID creation encountered a problem with the BX_INSTANCES\\.\n");
}

TEST_F(GridFailureDeathTest, CellThatDoesNotExistEndsTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const test::environment hidden(test::show_internal_error, nullptr);
  const BX_GRID grid(&db, every_tile);
  EXPECT_EXIT(grid.getinstance(0, 1), testing::ExitedWithCode(EXIT_FAILURE),
              "^A fatal error occurred\\. The process will now exit\\. "
              "\\[\\\\xD1\\\\xC5\\\\xCC\\\\xCD\\\\xCF\\\\xC4\\\\xC2\\] qelmodb:" +
                  test::digits + " version 1\\.0 code 1\n$");
}

}  // namespace
