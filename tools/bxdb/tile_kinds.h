// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Which tiles of a grid are of one kind, told by their names.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qelmodb.h"

namespace bxdb {

/// The name without what tells where the tile stands: "LUT4AB" of "Tile_X1Y3_LUT4AB", "CLB" of "CLB_X12Y7" and
/// "CLB_12_7", "IO_W" of "IO_W17". Never empty unless the name is.
std::string_view stem_of(std::string_view name) noexcept;

/// The kinds of a list of tiles. A tile's kind is the stem of its name. Numbers at the end belong to the kind all
/// the same where a few of them are shared by many tiles, as in "LUT4" and "LUT6". When all tiles have one name, as
/// switch matrices do, the instances that hold them are looked at in their place.
class tile_kinds {
 public:
  struct kind {
    std::string name;
    std::int64_t tiles = 0;
  };

  /// The tiles belong to the database.
  tile_kinds(const BX_DB& db, const std::vector<const BX_INSTANCE*>& tiles);

  /// The most frequent first; those of one frequency by name.
  const std::vector<kind>& kinds() const noexcept { return kinds_; }

  /// The place in kinds() of the kind of a tile, by the tile's place in the list.
  std::size_t kind_of(std::size_t tile) const noexcept { return kind_of_[tile]; }

  /// The name of all the tiles when their kinds are those of the instances that hold them; empty otherwise.
  const std::string& shared_name() const noexcept { return shared_name_; }

 private:
  std::vector<kind> kinds_;
  std::vector<std::size_t> kind_of_;
  std::string shared_name_;
};

}  // namespace bxdb
