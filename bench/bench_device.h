// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// The device that the benchmarks work on, made once, its files in a folder that goes away with the process, and the
// same device as plain arrays, from which the other ways of keeping it are made.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qelmodb.h"

namespace bench {

/// Chooses the device by "S", "M" or "L"; M when it is not called. False for any other text.
bool choose_device(const std::string& size);

/// How many tiles the device has in a row, and in a column.
std::int64_t device_lines();

/// The device as it stands in memory after its binary file was loaded.
BX_DB& device();

/// The device as a file.
const std::string& text_file();
const std::string& binary_file();
const std::string& compressed_file();

/// A file name in the same folder.
std::string scratch_file(const char* name);

/// Everything a file holds. Throws std::runtime_error when it cannot be read.
std::string read_whole(const std::string& name);

/// Writes a file through the file manager, which syncs and renames as a dump does. Throws std::runtime_error.
void write_whole(const std::string& name, const std::string& bytes);

/// What every way of keeping the device must agree on.
struct tree_sums {
  std::int64_t wires = 0;
  std::int64_t x = 0;
  std::int64_t y = 0;

  void count(std::int64_t node_x, std::int64_t node_y) noexcept {
    ++wires;
    x += node_x;
    y += node_y;
  }
  friend bool operator==(const tree_sums&, const tree_sums&) noexcept = default;
};

tree_sums sums_of(const BX_INSTANCE& root);

/// Those of device().
const tree_sums& expected_sums();

/// The device as plain arrays. Instances stand in the order of the walk, the root first; a wire's name is an index.
struct flat_wire {
  std::uint32_t name;
  std::int32_t x;
  std::int32_t y;
};

struct flat_instance {
  std::uint32_t name;
  std::int32_t xmin, ymin, xmax, ymax;
  std::uint32_t parent;  ///< that of the root is its own index, 0
  std::uint32_t children;
  std::uint32_t first_wire;
  std::uint32_t wires;
};

struct flat_tree {
  std::vector<std::string> names;
  std::vector<flat_instance> instances;
  std::vector<flat_wire> wires;
  std::vector<BX_INSTANCE*> origins;  ///< the instances of device()
};

const flat_tree& flat_device();

}  // namespace bench
