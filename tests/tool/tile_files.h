// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Databases that hold nothing but tiles.
#pragma once

#include <string>
#include <vector>

#include "ut_types.h"

namespace test {

struct tile_box {
  std::string name;
  bx_long xmin;
  bx_long ymin;
  bx_long xmax;
  bx_long ymax;
};

/// A database file of text form: the root "dev" and these tiles, each with one wire.
std::string text_of_tiles(std::vector<tile_box> tiles);

/// Two rows of three tiles, 100 units wide and high: in the upper row IO_W17, CLB_X1Y1, CLB_X2Y1.
std::vector<tile_box> six_tiles();

/// Without the lower right one: there are no rows of one length.
std::vector<tile_box> five_tiles();

/// The description of a device with the rows and columns of these.
std::string description_of_six();

}  // namespace test
