// SPDX-FileCopyrightText: The qelmodb authors
// SPDX-License-Identifier: Apache-2.0

// What loading cannot be quicker than: reading a file piece by piece and decoding it into plain memory, without names
// resolved, without a tree, without any check.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "huge_block.h"

namespace bench {

/// As large as a wire of the library.
struct bare_wire {
  std::int32_t x;
  std::int32_t y;
  std::uint64_t name;  ///< where its text stands in the file, or the reference that the file has
  std::uint64_t name_length;
};
static_assert(sizeof(bare_wire) == 24);

struct bare_instance {
  std::int32_t corners[4];
  std::uint64_t name;
  std::uint32_t first_wire;
  std::uint32_t wires;
};

/// Room for the instances and wires of a file, whose numbers are known.
class bare_tree {
 public:
  bare_tree(std::size_t instances, std::size_t wires);

  bare_instance* instances() const noexcept { return instances_.as<bare_instance>(); }
  bare_wire* wires() const noexcept { return wires_.as<bare_wire>(); }

 private:
  huge_block instances_;
  huge_block wires_;
};

/// Decode the file into the tree and give the number of wires. Throw std::runtime_error when it cannot be read.
std::size_t decode_text(const std::string& file, bare_tree& tree);
std::size_t decode_binary(const std::string& file, bare_tree& tree);

/// Writes as many wires, each a copy from a table that fits into the nearest cache.
void fill_from_table(const std::vector<bare_wire>& table, std::size_t wires, bare_tree& tree);

}  // namespace bench
