// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <ostream>

#include "bx_grid.h"
#include "ut_msgman.h"
#include "ut_string.h"

namespace {

constexpr const char* no_tile = "NULL_ASS";

using rectangle_form = void (*)(const BX_INSTANCE& tile, char* buffer, std::size_t size);

void no_rectangle(const BX_INSTANCE&, char*, std::size_t) {}

void corners(const BX_INSTANCE& tile, char* buffer, std::size_t size) {
  std::snprintf(buffer, size, "(%d, %d), (%d, %d)", tile.xmin, tile.ymin, tile.xmax, tile.ymax);
}

void print_spaces(int count) {
  for (; count > 0; --count) *ut_msgman << " ";
}

void print_title(std::uint16_t rows, std::uint16_t columns) {
  *ut_msgman << std::endl;
  *ut_msgman << "BXD grid contains " << static_cast<bx_ulong>(rows) << " rows and " << static_cast<bx_ulong>(columns)
             << " columns" << std::endl
             << std::endl;
}

// Starts one character to the left of the lines below it. That has always been so, and scripts count on it.
void print_header(std::uint16_t columns, int width) {
  *ut_msgman << "  ";
  for (std::uint16_t column = 0; column < columns; ++column) {
    print_spaces(width / 2 - 1);
    *ut_msgman << neoform("%03d", column);
    print_spaces(width - (width / 2 + 1));
  }
  *ut_msgman << std::endl;
}

std::uint16_t size_of(const DARRAY_BX_INSTPTR* list) {
  return list != nullptr ? static_cast<std::uint16_t>(list->getcount()) : std::uint16_t{0};
}

void print_cell(const DARRAY_BX_INSTPTR* list, std::uint16_t line, int width, rectangle_form form) {
  char rectangle[256] = "";
  const char* text = no_tile;
  if (line < size_of(list)) {
    const BX_INSTANCE& tile = *(*list)[line];
    text = ut_text(tile.name);
    form(tile, rectangle, sizeof rectangle);
  } else if (list != nullptr && line > 0) {
    text = "";
  }
  *ut_msgman << text;
  if (rectangle[0] != '\0') *ut_msgman << rectangle;
  const std::size_t length = std::strlen(text) + std::strlen(rectangle);
  const auto cell_width = static_cast<std::size_t>(width) + 1;
  print_spaces(static_cast<int>(cell_width - std::min(length, cell_width)));
}

void print_row(const BX_GRID& grid, short row, int width, rectangle_form form) {
  std::uint16_t lines = 1;
  for (std::uint16_t line = 0; line < lines; ++line) {
    *ut_msgman << (line == 0 ? neoform("%02d ", row) : "   ");
    for (short column = 0; column < grid.getnumcols(); ++column) {
      const DARRAY_BX_INSTPTR* list = grid.getinstances(row, column);
      lines = std::max(lines, size_of(list));
      print_cell(list, line, width, form);
    }
    *ut_msgman << std::endl;
  }
}

void print_grid(const BX_GRID& grid, int width, rectangle_form form) {
  print_title(static_cast<std::uint16_t>(grid.getnumrows()), static_cast<std::uint16_t>(grid.getnumcols()));
  print_header(static_cast<std::uint16_t>(grid.getnumcols()), width);
  for (short row = 0; row < grid.getnumrows(); ++row) print_row(grid, row, width, form);
}

}  // namespace

void BX_GRID::printme() const { print_grid(*this, name_width_, no_rectangle); }

void BX_GRID::printextrema() const {
  constexpr int widest_rectangle = 40;
  print_grid(*this, static_cast<std::uint16_t>(name_width_ + widest_rectangle), corners);
}
