// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// A picture of a grid: its tiles to scale, coloured by kind, with row and column numbers and a legend.
#pragma once

#include <memory>
#include <string>

#include "qelmodb.h"

namespace bxdb {

class grid_picture {
 public:
  /// The grid is one of the database. The title begins with the name of the file.
  grid_picture(const BX_DB& db, const BX_GRID& grid, const std::string& file);
  grid_picture(const grid_picture&) = delete;
  grid_picture& operator=(const grid_picture&) = delete;
  ~grid_picture();

  /// The bytes of a picture file.
  std::string png() const;

  /// The same. cairo draws texts as outlines; those of title and legend stand in the elements "title" and "desc",
  /// too, for searches and for people who do not see the picture.
  std::string svg() const;

 private:
  class page;
  std::unique_ptr<page> page_;
};

}  // namespace bxdb
