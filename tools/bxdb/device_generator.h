// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// Builds synthetic devices: for tests, benchmarks and first steps.
#pragma once

#include <memory>

#include "device_plan.h"
#include "qelmodb.h"

namespace bxdb {

/// A database with the device. The same options give the same tree on every platform, and the same bytes of its
/// text file; a binary file refers to names by numbers that differ from run to run. Throws std::invalid_argument, with
/// the reason, for options that give no device or one whose coordinates or counts do not fit into 32 bits.
///
/// In the device profile each tile holds one instance "BASIC_ASS" for each of its rows and one leaf with its
/// pins. The tiles are added to the root one by one, so those of a column stand under a column instance
/// "BXD__..."; only the tiles at the root's left edge are its own children.
std::unique_ptr<BX_DB> generate_device(const device_options& options);

/// What a device comes to, about.
struct device_size {
  double instances = 0.0;
  double wires = 0.0;
  double memory = 0.0;  ///< bytes of the tree
};

/// The size of the device that generate_device would make of these options, told by a part of it, in little time
/// and memory however large that is. Throws as that does.
device_size estimate_device(const device_options& options);

/// Where the rows and columns of a device begin, and behind the last of each where it ends.
struct device_edges {
  std::vector<bx_long> rows;
  std::vector<bx_long> columns;
};

/// The edges of the device that generate_device makes of these options. Throws as that does.
device_edges edges_of_device(const device_options& options);

}  // namespace bxdb
