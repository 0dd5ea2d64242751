// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// How the tool comes to the grid of a file's tiles.
#pragma once

#include <memory>

#include "commands.h"
#include "loaded_database.h"

namespace bxdb {

/// Makes the grid that the options ask for. Where the tiles leave places free, the device's rows and columns come from
/// a description, or from the tiles themselves; one line on standard error says so when nobody asked for the latter,
/// and when a given description was not needed. Throws failure, with the reason, when the tiles give no grid.
std::unique_ptr<BX_GRID> make_tile_grid(const loaded_database& loaded, const grid_options& options);

}  // namespace bxdb
