// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// For builds without cairo.
#include "failure.h"
#include "grid_picture.h"

namespace bxdb {

class grid_picture::page {};

grid_picture::grid_picture(const BX_DB& /*db*/, const BX_GRID& /*grid*/, const std::string& file) {
  throw failure(file + ": cannot be drawn: this build of bxdb was made without cairo");
}
grid_picture::~grid_picture() = default;

std::string grid_picture::png() const { return {}; }
std::string grid_picture::svg() const { return {}; }

}  // namespace bxdb
