// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The two reports of a grid, byte for byte.
#include <gtest/gtest.h>

#include "exposed.h"
#include "grid_tiles.h"

namespace {

using test::even_device;
using test::every_tile;
using test::put_tile;

std::string names_report(BX_GRID& grid) {
  const test::caught_report report;
  grid.printme();
  return report.text();
}

std::string extrema_report(BX_GRID& grid) {
  const test::caught_report report;
  grid.printextrema();
  return report.text();
}

class GridReports : public testing::Test {
 protected:
  BX_DB db{"D", 0, 0, 100, 100};
};

TEST_F(GridReports, OfAFullRectangleHaveOneLinePerRowAndAHeaderTwoCharactersNarrower) {
  put_tile(db, "CLB_00", 0, 10, 10, 20);
  put_tile(db, "CLB_1", 10, 10, 20, 20);
  put_tile(db, "RAM", 0, 0, 10, 10);
  put_tile(db, "IO_123", 10, 0, 20, 10);
  BX_GRID grid(&db, every_tile);
  EXPECT_EQ(names_report(grid),
            "\n"
            "BXD grid contains 2 rows and 2 columns\n"
            "\n"
            "    000    001  \n"
            "00 CLB_00 CLB_1  \n"
            "01 RAM    IO_123 \n");
}

TEST_F(GridReports, WithRectanglesHaveThemRightBehindTheNames) {
  put_tile(db, "AB", -5, 10, 10, 20);
  put_tile(db, "C", 10, 10, 2147483647, 20);
  BX_GRID grid(&db, every_tile);
  EXPECT_EQ(extrema_report(grid),
            "\n"
            "BXD grid contains 1 rows and 2 columns\n"
            "\n"
            "  " +
                std::string(20, ' ') + "000" + std::string(20, ' ') + std::string(20, ' ') + "001" +
                std::string(20, ' ') +
                "\n"
                "00 AB(-5, 10), (10, 20)" +
                std::string(23, ' ') + "C(10, 10), (2147483647, 20)" + std::string(16, ' ') + "\n");
}

TEST_F(GridReports, RowIsAsTallAsItsFullestCellAndEmptyCellsSayNullAssOnEveryLine) {
  put_tile(db, "a1", 0, 16, 4, 20);
  put_tile(db, "a2", 4, 16, 8, 20);
  put_tile(db, "a3", 0, 10, 4, 14);
  put_tile(db, "b", 10, 10, 20, 20);
  put_tile(db, "c", 20, 0, 30, 10);
  put_tile(db, "d", 10, 0, 20, 10);
  even_device device(2, 3, 10);
  db.setdevice(&device);
  BX_GRID grid(&db, every_tile);
  EXPECT_EQ(names_report(grid),
            "\n"
            "BXD grid contains 2 rows and 3 columns\n"
            "\n"
            "  000001002\n"
            "00 a1 b  NULL_ASS\n"
            "   a2    NULL_ASS\n"
            "   a3    NULL_ASS\n"
            "01 NULL_ASSd  c  \n");
  const std::string with_rectangles = extrema_report(grid);
  EXPECT_NE(with_rectangles.find("   a2(4, 16), (8, 20)" + std::string(25, ' ') + std::string(43, ' ') + "NULL_ASS" +
                                 std::string(35, ' ') + "\n"),
            std::string::npos)
      << with_rectangles;
}

TEST_F(GridReports, CellWhoseListWasEmptiedSaysNullAssOnTheFirstLineOnly) {
  put_tile(db, "a1", 0, 10, 4, 14);
  put_tile(db, "a2", 4, 10, 8, 14);
  put_tile(db, "b", 10, 10, 20, 20);
  put_tile(db, "c", 0, 0, 10, 9);
  even_device device(2, 2, 10);
  db.setdevice(&device);
  BX_GRID grid(&db, every_tile);
  grid.getinstances(0, 1)->empty();
  EXPECT_EQ(names_report(grid),
            "\n"
            "BXD grid contains 2 rows and 2 columns\n"
            "\n"
            "  000001\n"
            "00 a1 NULL_ASS\n"
            "   a2    \n"
            "01 c  NULL_ASS\n");
}

TEST_F(GridReports, OfNoRowsHaveTitleAndHeaderOnly) {
  test::recording_manager returns;
  {
    const test::substitute in_place(returns);
    BX_GRID* grid = db.getgrid(const_cast<const char**>(every_tile));
    ASSERT_NE(grid, nullptr);
  }
  EXPECT_EQ(names_report(*db.grid), "\nBXD grid contains 0 rows and 0 columns\n\n  \n");
  EXPECT_EQ(extrema_report(*db.grid), "\nBXD grid contains 0 rows and 0 columns\n\n  \n");
}

TEST_F(GridReports, WithANameWidthOfOneHaveNoSpacesBeforeTheColumnNumbers) {
  put_tile(db, "a", 0, 0, 10, 10);
  put_tile(db, "b", 10, 0, 20, 10);
  BX_GRID grid(&db, every_tile);
  EXPECT_EQ(names_report(grid),
            "\n"
            "BXD grid contains 1 rows and 2 columns\n"
            "\n"
            "  000001\n"
            "00 a b \n");
}

TEST_F(GridReports, NumbersTakeTheirDigits) {
  for (bx_long i = 0; i < 1001; ++i) put_tile(db, "t", i, 0, i + 1, 1);
  BX_GRID wide(&db, every_tile);
  EXPECT_NE(names_report(wide).find("998999"
                                    "1000\n"),
            std::string::npos);
  BX_DB tall_db("T", 0, 0, 1, 1);
  for (bx_long i = 0; i < 101; ++i) put_tile(tall_db, "t", i, i, i + 1, i + 1);
  BX_GRID tall(&tall_db, every_tile);
  EXPECT_NE(names_report(tall).find("\n99 t \n100 t \n"), std::string::npos);
}

TEST_F(GridReports, GoToTheMessageManagerPieceByPiece) {
  put_tile(db, "ab", 0, 0, 10, 10);
  BX_GRID grid(&db, every_tile);
  const test::caught_report report;
  grid.printme();
  const std::vector<std::string> expected{
      "\n", "BXD grid contains ", "1", " rows and ", "1", " columns", "\n", "\n", "  ", "000", "\n", "00 ", "ab", " ",
      "\n"};
  EXPECT_EQ(report.pieces(), expected);
}

}  // namespace
